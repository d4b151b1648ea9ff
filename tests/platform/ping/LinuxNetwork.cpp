#include "tests/platform/ping/LinuxNetwork.h"

#include <sched.h>
#include <unistd.h>

#include <QFile>

namespace vandrel::test {

namespace {

constexpr int patience = 20'000;

bool write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && file.write(text) == text.size();
}

// An ordinary user becomes the administrator of a user namespace, and of nothing else.
bool becomeAdministrator()
{
    const QByteArray user = QByteArray::number(geteuid());
    const QByteArray group = QByteArray::number(getegid());
    return unshare(CLONE_NEWUSER) == 0 && write(QStringLiteral("/proc/self/setgroups"), "deny")
        && write(QStringLiteral("/proc/self/uid_map"), "0 " + user + " 1")
        && write(QStringLiteral("/proc/self/gid_map"), "0 " + group + " 1");
}

} // namespace

bool enterOwnNetwork()
{
    if (geteuid() != 0 && !becomeAdministrator())
        return false;
    return unshare(CLONE_NEWNET) == 0
        && run({QStringLiteral("ip"), QStringLiteral("link"), QStringLiteral("set"), QStringLiteral("lo"),
                QStringLiteral("up")});
}

bool permitDatagrams()
{
    return write(QStringLiteral("/proc/sys/net/ipv4/ping_group_range"), "0 0");
}

bool run(const QStringList &command)
{
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(command.first(), command.mid(1));
    return process.waitForFinished(patience) && process.exitStatus() == QProcess::NormalExit
        && process.exitCode() == 0;
}

Neighbour::Neighbour()
{
    m_isThere = start();
}

Neighbour::~Neighbour()
{
    for (QProcess *process : {&m_hosts, &m_computer}) {
        process->kill();
        process->waitForFinished(patience);
    }
}

bool Neighbour::start()
{
    m_computer.start(QStringLiteral("unshare"),
                     {QStringLiteral("--net"), QStringLiteral("sh"), QStringLiteral("-c"),
                      QStringLiteral("echo ready; exec sleep 600")});
    if (!m_computer.waitForReadyRead(patience))
        return false;
    const QString number = QString::number(m_computer.processId());
    const QString here = QStringLiteral("set -e\n"
                                        "ip link add near type veth peer name far netns %1\n"
                                        "ip address add 10.77.0.1/24 dev near\n"
                                        "ip address add fd77::1/64 dev near nodad\n"
                                        "ip link set near up\n"
                                        "echo 50 > /proc/sys/net/ipv4/neigh/near/retrans_time_ms\n"
                                        "echo 50 > /proc/sys/net/ipv6/neigh/near/retrans_time_ms\n");
    const QString there = QStringLiteral("set -e\n"
                                         "ip address add 10.77.0.2/24 dev far\n"
                                         "ip address add fd77::2/64 dev far nodad\n"
                                         "ip link set far up\n"
                                         "echo 1 > /proc/sys/net/ipv4/ip_forward\n"
                                         "echo 1 > /proc/sys/net/ipv6/conf/all/forwarding\n"
                                         "echo 0 > /proc/sys/net/ipv4/icmp_ratelimit\n"
                                         "echo 0 > /proc/sys/net/ipv6/icmp/ratelimit\n"
                                         "ip route add unreachable 10.78.1.0/24\n"
                                         "ip route add prohibit 10.78.2.0/24\n"
                                         "ip route add blackhole 10.78.3.0/24\n"
                                         "ip route add 10.78.4.0/24 via 10.77.0.1\n"
                                         "ip -6 route add unreachable fd78:1::/64\n");
    const QString routes = QStringLiteral("ip route add 10.78.0.0/16 via 10.77.0.2 && "
                                          "ip -6 route add fd78::/16 via fd77::2");
    if (!run({QStringLiteral("sh"), QStringLiteral("-c"), here.arg(number)}) || !within(there)
        || !run({QStringLiteral("sh"), QStringLiteral("-c"), routes}))
        return false;
    m_hosts.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    m_hosts.start(QStringLiteral("nsenter"),
                  {QStringLiteral("-t"), number, QStringLiteral("-n"), QStringLiteral("/usr/bin/python3"),
                   qEnvironmentVariable("VANDREL_SOURCE_DIR") + QStringLiteral("/tests/servers/echo_host.py"),
                   QStringLiteral("far")});
    return m_hosts.waitForReadyRead(patience);
}

bool Neighbour::within(const QString &script) const
{
    return run({QStringLiteral("nsenter"), QStringLiteral("-t"), QString::number(m_computer.processId()),
                QStringLiteral("-n"), QStringLiteral("sh"), QStringLiteral("-c"), script});
}

} // namespace vandrel::test
