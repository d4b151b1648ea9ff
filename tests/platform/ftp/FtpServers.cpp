#include "tests/platform/ftp/FtpServers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

namespace vandrel::test {

namespace {

constexpr int longestRun = 30'000;

// The standard output of a short program; empty where it fails.
QByteArray outputOf(const QString &program, const QStringList &arguments)
{
    QProcess process;
    process.start(program, arguments);
    if (!process.waitForFinished(longestRun) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput().trimmed();
}

// The user that a daemon runs as: this program's own, unless that is root.
struct ServerUser {
    bool isOwn = true;
    QString name;
    QString group;
    QString number;
};

ServerUser serverUser()
{
    const auto id
        = [](const QString &what) { return QString::fromLocal8Bit(outputOf(QStringLiteral("id"), {what})); };
    const QString number = id(QStringLiteral("-u"));
    if (number == u'0')
        return {false, QStringLiteral("nobody"), QStringLiteral("nogroup"), QStringLiteral("65534")};
    return {true, id(QStringLiteral("-un")), id(QStringLiteral("-gn")), number};
}

} // namespace

FtpServer::FtpServer()
{
    QDir().mkpath(root());
}

bool FtpServer::hasProftpd()
{
    return !ServerProcess::installed(QStringLiteral("proftpd")).isEmpty()
        && QFile::exists(QStringLiteral("/usr/lib/proftpd/mod_tls.so"));
}

bool FtpServer::write(const QString &name, const QString &text) const
{
    QFile file(path(name));
    const QByteArray octets = text.toUtf8();
    return file.open(QIODevice::WriteOnly) && file.write(octets) == octets.size()
        && file.setPermissions(QFile::ReadOwner | QFile::WriteOwner);
}

QByteArray FtpServer::log() const
{
    QFile file(path(QStringLiteral("log")));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void FtpServer::limitTls(const QString &version)
{
    write(QStringLiteral("openssl.cnf"),
          QStringLiteral("openssl_conf=all\n[all]\nssl_conf=kinds\n[kinds]\nsystem_default=limits\n"
                         "[limits]\nMaxProtocol=%1\n")
              .arg(version));
    m_process.setVariable(QStringLiteral("OPENSSL_CONF"), path(QStringLiteral("openssl.cnf")));
}

bool FtpServer::startLibrary(const QStringList &options)
{
    const QString script
        = qEnvironmentVariable("VANDREL_SOURCE_DIR") + QStringLiteral("/tests/servers/ftp_server.py");
    const QStringList words
        = m_process.startAndHear(QStringLiteral("/usr/bin/python3"), QStringList{script, root()} + options);
    m_address = QStringLiteral("localhost:") + words.value(1);
    return words.size() == 2;
}

bool FtpServer::startAsOrdinaryUser(const QString &program,
                                    const QStringList &arguments,
                                    const QHostAddress &address,
                                    quint16 port)
{
    m_address = address.protocol() == QAbstractSocket::IPv6Protocol ? QStringLiteral("[%1]:%2")
                                                                    : QStringLiteral("%1:%2");
    m_address = m_address.arg(address.toString()).arg(port);
    const ServerUser user = serverUser();
    if (user.isOwn)
        return m_process.startAndKnock(program, arguments, address, port);
    outputOf(QStringLiteral("chown"), {QStringLiteral("-R"), user.name + u':' + user.group, m_folder.path()});
    const QStringList asThatUser{QStringLiteral("--reuid=") + user.name,
                                 QStringLiteral("--regid=") + user.group, QStringLiteral("--clear-groups"),
                                 program};
    return m_process.startAndKnock(QStringLiteral("setpriv"), asThatUser + arguments, address, port);
}

bool FtpServer::startVsftpd(const TestIdentity &identity, const QStringList &settings)
{
    const quint16 port = ServerProcess::freePort();
    QDir().mkpath(path(QStringLiteral("empty")));
    const QString configuration = QStringLiteral(R"(listen=YES
listen_address=127.0.0.1
listen_port=%1
background=NO
run_as_launching_user=YES
seccomp_sandbox=NO
secure_chroot_dir=%2/empty
ftp_username=nobody
anonymous_enable=YES
no_anon_password=YES
anon_root=%2/root
write_enable=YES
anon_upload_enable=YES
anon_mkdir_write_enable=YES
anon_other_write_enable=YES
anon_world_readable_only=NO
anon_umask=022
ssl_enable=YES
allow_anon_ssl=YES
force_anon_logins_ssl=YES
force_anon_data_ssl=YES
require_ssl_reuse=YES
strict_ssl_read_eof=YES
ssl_ciphers=HIGH
rsa_cert_file=%3
rsa_private_key_file=%4
debug_ssl=YES
log_ftp_protocol=YES
xferlog_enable=YES
xferlog_std_format=NO
vsftpd_log_file=%2/log
%5
)")
                                      .arg(port)
                                      .arg(m_folder.path(), copied(identity.certificateFile),
                                           copied(identity.keyFile), settings.join(u'\n'));
    return write(QStringLiteral("vsftpd.conf"), configuration)
        && startAsOrdinaryUser(ServerProcess::installed(QStringLiteral("vsftpd")),
                               {path(QStringLiteral("vsftpd.conf"))}, QHostAddress::LocalHost, port);
}

bool FtpServer::startProftpd(const TestIdentity &identity,
                             const QStringList &settings,
                             const QHostAddress &address)
{
    const quint16 port = ServerProcess::freePort(address);
    const ServerUser user = serverUser();
    const QByteArray password
        = outputOf(QStringLiteral("openssl"),
                   {QStringLiteral("passwd"), QStringLiteral("-6"), QStringLiteral("s3cret")});
    const QString configuration
        = QStringLiteral(R"(ServerType standalone
DefaultAddress %1
Port %2
SocketBindTight on
UseIPv6 on
UseReverseDNS off
User %7
Group %8
PidFile %3/pid
ScoreboardFile none
DelayEngine off
WtmpLog off
TransferLog none
SystemLog %3/system.log
AuthOrder mod_auth_file.c
AuthUserFile %3/users
RequireValidShell off
AllowOverwrite on
ModulePath /usr/lib/proftpd
LoadModule mod_tls.c
ControlsEngine off
TLSEngine on
TLSRequired on
TLSProtocol TLSv1.2 TLSv1.3
TLSECCertificateFile %4
TLSECCertificateKeyFile %5
TLSLog %3/log
%6
)")
              .arg(address.toString())
              .arg(port)
              .arg(m_folder.path(), copied(identity.certificateFile), copied(identity.keyFile),
                   settings.join(u'\n'), user.name, user.group);
    return write(QStringLiteral("users"),
                 QStringLiteral("vandrel:%1:%2:%2::%3:/bin/false\n")
                     .arg(QString::fromLatin1(password))
                     .arg(user.number)
                     .arg(root()))
        && write(QStringLiteral("proftpd.conf"), configuration)
        && startAsOrdinaryUser(
               ServerProcess::installed(QStringLiteral("proftpd")),
               {QStringLiteral("-n"), QStringLiteral("-c"), path(QStringLiteral("proftpd.conf"))}, address,
               port);
}

// The server may not read what is the test's own.
QString FtpServer::copied(const QString &file) const
{
    const QString copy = path(QFileInfo(file).fileName());
    QFile::copy(file, copy);
    return copy;
}

} // namespace vandrel::test
