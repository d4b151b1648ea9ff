#include "platform/ping/LinuxEchoSocket.h"

#include <cerrno>
#include <cstring>
#include <ctime>
#include <system_error>

#include <linux/errqueue.h>
#include <linux/icmp.h>
#include <netinet/icmp6.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <QElapsedTimer>
#include <QNetworkInterface>
#include <QRandomGenerator>

#include "platform/ping/PosixReadiness.h"

namespace vandrel {

namespace {

using End = EchoOutcome::End;

// A packet with its header, and what the system tells about it beside.
constexpr std::size_t longestMessage = 65536;
constexpr std::size_t longestControl = 512;
// How many foreign packets are looked at before the windows may paint again.
constexpr int mostAtOnce = 256;

/// An address as the system wants it.
struct SystemAddress {
    sockaddr_storage storage{};
    socklen_t size = 0;

    sockaddr *get() { return reinterpret_cast<sockaddr *>(&storage); }
};

SystemAddress systemAddress(const QHostAddress &address)
{
    SystemAddress result;
    if (address.protocol() == QAbstractSocket::IPv4Protocol) {
        auto *to = reinterpret_cast<sockaddr_in *>(&result.storage);
        to->sin_family = AF_INET;
        to->sin_addr.s_addr = htonl(address.toIPv4Address());
        result.size = sizeof *to;
        return result;
    }
    auto *to = reinterpret_cast<sockaddr_in6 *>(&result.storage);
    to->sin6_family = AF_INET6;
    const Q_IPV6ADDR octets = address.toIPv6Address();
    std::memcpy(&to->sin6_addr, &octets, sizeof octets);
    // A name, or the number itself; 0 where there is no such interface.
    const int scope = QNetworkInterface::interfaceIndexFromName(address.scopeId());
    to->sin6_scope_id = static_cast<quint32>(scope > 0 ? scope : address.scopeId().toInt());
    result.size = sizeof *to;
    return result;
}

int openSocket(LinuxEchoSocket::Kind kind, EchoFamily family)
{
    const bool isIPv4 = family == EchoFamily::IPv4;
    const int type = kind == LinuxEchoSocket::Kind::Datagram ? SOCK_DGRAM : SOCK_RAW;
    return socket(isIPv4 ? AF_INET : AF_INET6, type | SOCK_CLOEXEC | SOCK_NONBLOCK,
                  isIPv4 ? static_cast<int>(IPPROTO_ICMP) : static_cast<int>(IPPROTO_ICMPV6));
}

template<typename Value>
void setOption(int socket, int level, int option, const Value &value)
{
    setsockopt(socket, level, option, &value, sizeof value);
}

// Only replies come through, only error messages are queued, packets may be cut into pieces on the way, and the
// system notes when each arrived. Where an option is refused the checks of what arrives do its work.
void prepare(int socket, LinuxEchoSocket::Kind kind, EchoFamily family)
{
    const bool isRaw = kind == LinuxEchoSocket::Kind::Raw;
    setOption(socket, SOL_SOCKET, SO_TIMESTAMPNS, 1);
    if (family == EchoFamily::IPv4) {
        setOption(socket, IPPROTO_IP, IP_RECVERR, 1);
        setOption(socket, IPPROTO_IP, IP_MTU_DISCOVER, static_cast<int>(IP_PMTUDISC_DONT));
        if (isRaw)
            setOption(socket, SOL_RAW, ICMP_FILTER, icmp_filter{~(1U << ICMP_ECHOREPLY)});
        return;
    }
    setOption(socket, IPPROTO_IPV6, IPV6_RECVERR, 1);
    setOption(socket, IPPROTO_IPV6, IPV6_MTU_DISCOVER, static_cast<int>(IPV6_PMTUDISC_DONT));
    if (isRaw) {
        icmp6_filter filter;
        ICMP6_FILTER_SETBLOCKALL(&filter);
        ICMP6_FILTER_SETPASS(ICMP6_ECHO_REPLY, &filter);
        setOption(socket, IPPROTO_ICMPV6, ICMP6_FILTER, filter);
    }
}

EchoOutcome localFailure(int error)
{
    switch (error) {
    case ENETUNREACH:
    case EHOSTUNREACH:
    case ENETDOWN:
    case EADDRNOTAVAIL:
        return EchoOutcome::failed(End::NoRoute);
    case EACCES:
        return EchoOutcome::failed(End::NotAllowed);
    case EPERM:
        return EchoOutcome::failed(End::Filtered);
    case EMSGSIZE:
        return EchoOutcome::failed(End::TooLong);
    default:
        return EchoOutcome::failed(End::Failed,
                                   QString::fromStdString(std::generic_category().message(error)));
    }
}

EchoOutcome openingFailure(int error)
{
    const bool isDenied = error == EACCES || error == EPERM || error == EPROTONOSUPPORT;
    return isDenied ? EchoOutcome::failed(EchoOutcome::End::NotPermitted) : localFailure(error);
}

/// One message of the system's, with what came beside it.
class Received
{
public:
    Received() : m_octets(longestMessage, Qt::Uninitialized) { }

    // False when there is none of that kind now.
    bool take(int socket, int flags)
    {
        iovec place{m_octets.data(), static_cast<std::size_t>(m_octets.size())};
        m_header = {};
        m_header.msg_name = &m_sender;
        m_header.msg_namelen = sizeof m_sender;
        m_header.msg_iov = &place;
        m_header.msg_iovlen = 1;
        m_header.msg_control = m_control;
        m_header.msg_controllen = sizeof m_control;
        const ssize_t size = recvmsg(socket, &m_header, flags | MSG_DONTWAIT);
        m_size = size > 0 ? size : 0;
        return size >= 0;
    }

    QByteArrayView octets() const { return QByteArrayView(m_octets).first(m_size); }
    QHostAddress sender() const { return QHostAddress(reinterpret_cast<const sockaddr *>(&m_sender)); }

    // When it arrived, by the clock of the day; 0 when the system does not say.
    qint64 arrival()
    {
        const auto *time = beside<timespec>(SOL_SOCKET, SO_TIMESTAMPNS);
        return time ? qint64{time->tv_sec} * 1'000'000'000 + time->tv_nsec : 0;
    }

    const sock_extended_err *error()
    {
        const auto *error = beside<sock_extended_err>(IPPROTO_IP, IP_RECVERR);
        return error ? error : beside<sock_extended_err>(IPPROTO_IPV6, IPV6_RECVERR);
    }

    // Who sent the error message; the address follows it.
    static QHostAddress reporter(const sock_extended_err *error)
    {
        return QHostAddress(SO_EE_OFFENDER(const_cast<sock_extended_err *>(error)));
    }

private:
    template<typename Value>
    const Value *beside(int level, int type)
    {
        for (cmsghdr *each = CMSG_FIRSTHDR(&m_header); each; each = CMSG_NXTHDR(&m_header, each)) {
            if (each->cmsg_level == level && each->cmsg_type == type
                && each->cmsg_len >= CMSG_LEN(sizeof(Value)))
                return reinterpret_cast<const Value *>(CMSG_DATA(each));
        }
        return nullptr;
    }

    QByteArray m_octets;
    qsizetype m_size = 0;
    msghdr m_header{};
    sockaddr_storage m_sender{};
    alignas(cmsghdr) char m_control[longestControl]{};
};

qint64 timeOfDay()
{
    timespec now{};
    clock_gettime(CLOCK_REALTIME, &now);
    return qint64{now.tv_sec} * 1'000'000'000 + now.tv_nsec;
}

/// One request on its socket, from sending to its end.
class Exchange
{
public:
    Exchange(int socket, LinuxEchoSocket::Kind kind, const EchoQuestion &question, EchoKey key)
        : m_socket(socket), m_kind(kind), m_question(question), m_key(key)
    { }

    EchoOutcome run(EchoPause &pause)
    {
        if (const int error = send())
            return localFailure(error);
        ReadinessWait wait(m_socket, m_question.timeOut, pause);
        while (true) {
            switch (wait.next()) {
            case ReadinessWait::Result::Cancelled:
                return EchoOutcome::failed(EchoOutcome::End::Cancelled);
            case ReadinessWait::Result::TimedOut:
                return silence();
            case ReadinessWait::Result::Ready:
                break;
            }
            if (auto outcome = takeWhatCame())
                return *outcome;
        }
    }

private:
    // Sends the request; the system's error number, or 0.
    int send()
    {
        SystemAddress to = systemAddress(m_question.to);
        const QByteArray message = echoRequest(m_question.family(), m_key, m_question.data);
        m_sentAt = timeOfDay();
        m_sinceSending.start();
        if (sendto(m_socket, message.constData(), static_cast<std::size_t>(message.size()), MSG_NOSIGNAL,
                   to.get(), to.size)
            < 0)
            return errno;
        if (m_kind == LinuxEchoSocket::Kind::Datagram)
            takeSystemsIdentifier();
        return 0;
    }

    // The system has written its own mark over ours, and calls it the socket's port.
    void takeSystemsIdentifier()
    {
        SystemAddress own;
        own.size = sizeof own.storage;
        if (getsockname(m_socket, own.get(), &own.size) != 0)
            return;
        const bool isIPv4 = m_question.family() == EchoFamily::IPv4;
        m_key.identifier = ntohs(isIPv4 ? reinterpret_cast<const sockaddr_in *>(&own.storage)->sin_port
                                        : reinterpret_cast<const sockaddr_in6 *>(&own.storage)->sin6_port);
    }

    EchoOutcome silence() const
    {
        EchoOutcome outcome = EchoOutcome::failed(EchoOutcome::End::Silent);
        outcome.otherDataCame = m_otherDataCame;
        return outcome;
    }

    std::optional<EchoOutcome> takeWhatCame()
    {
        for (int count = 0; count < mostAtOnce; ++count) {
            if (m_received.take(m_socket, 0)) {
                if (auto outcome = reply())
                    return outcome;
            } else if (m_received.take(m_socket, MSG_ERRQUEUE)) {
                if (auto outcome = refusal())
                    return outcome;
            } else {
                break;
            }
        }
        return std::nullopt;
    }

    std::optional<EchoOutcome> reply()
    {
        QByteArrayView message = m_received.octets();
        if (m_kind == LinuxEchoSocket::Kind::Raw && m_question.family() == EchoFamily::IPv4)
            message = withoutIPv4Header(message);
        const auto reply = readEchoReply(m_question.family(), message);
        if (!reply || reply->key != m_key || !isExpected(m_received.sender()))
            return std::nullopt;
        if (reply->data != m_question.data) {
            m_otherDataCame = true;
            return std::nullopt;
        }
        EchoOutcome outcome;
        outcome.end = EchoOutcome::End::Replied;
        outcome.data = reply->data.toByteArray();
        outcome.dataSize = reply->data.size();
        outcome.nanoseconds = travelTime();
        outcome.reporter = m_received.sender().toString();
        return outcome;
    }

    // One host answers for its own address, any host for an address of many.
    bool isExpected(QHostAddress sender) const
    {
        QHostAddress asked = m_question.to;
        sender.setScopeId({});
        asked.setScopeId({});
        return asked.isMulticast() || asked.isEqual(QHostAddress(QHostAddress::AnyIPv4))
            || asked.isEqual(QHostAddress(QHostAddress::AnyIPv6)) || sender.isEqual(asked);
    }

    // The moment of arrival is the system's, so that painting in between does not count. A clock that was set
    // meanwhile is told from one that was not by the steady one.
    qint64 travelTime()
    {
        const qint64 atMost = m_sinceSending.nsecsElapsed();
        const qint64 arrival = m_received.arrival();
        const qint64 travelled = arrival - m_sentAt;
        return arrival != 0 && travelled >= 0 && travelled <= atMost ? travelled : atMost;
    }

    std::optional<EchoOutcome> refusal()
    {
        const sock_extended_err *error = m_received.error();
        if (!error)
            return std::nullopt;
        const auto key = readEchoRequestKey(m_question.family(), m_received.octets());
        if (key && *key != m_key)
            return std::nullopt;
        if (error->ee_origin == SO_EE_ORIGIN_LOCAL)
            return localFailure(static_cast<int>(error->ee_errno));
        if (!key || (error->ee_origin != SO_EE_ORIGIN_ICMP && error->ee_origin != SO_EE_ORIGIN_ICMP6))
            return std::nullopt;
        EchoOutcome outcome = EchoOutcome::failed(EchoOutcome::End::Refused);
        outcome.refusal = echoRefusal(m_question.family(), error->ee_type, error->ee_code);
        outcome.reporter = Received::reporter(error).toString();
        return outcome;
    }

    const int m_socket;
    const LinuxEchoSocket::Kind m_kind;
    const EchoQuestion &m_question;
    EchoKey m_key;
    Received m_received;
    QElapsedTimer m_sinceSending;
    qint64 m_sentAt = 0;
    bool m_otherDataCame = false;
};

} // namespace

LinuxEchoSocket::LinuxEchoSocket(Kind kind)
    : m_kind(kind), m_identifier(static_cast<quint16>(QRandomGenerator::global()->generate()))
{ }

EchoOutcome LinuxEchoSocket::ask(const EchoQuestion &question, EchoPause &pause)
{
    const Descriptor socket(openSocket(m_kind, question.family()));
    if (!socket.isOpen())
        return openingFailure(errno);
    prepare(socket, m_kind, question.family());
    return Exchange(socket, m_kind, question, {m_identifier, ++m_sequence}).run(pause);
}

} // namespace vandrel
