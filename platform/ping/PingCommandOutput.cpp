#include "platform/ping/PingCommandOutput.h"

#include <cmath>

#include <QRegularExpression>

namespace vandrel {

namespace {

using End = EchoOutcome::End;

// Of each line no more is read; the command's own are far shorter.
constexpr qsizetype longestLine = 512;
constexpr qsizetype longestReason = 200;
// Type, code, checksum, identifier, sequence number: the command counts them in.
constexpr int echoHeaderSize = 8;

struct Meaning {
    const char *words;
    EchoRefusal refusal;
};

// In the order in which they are looked for.
constexpr Meaning refusals[] = {
    {"Time to live exceeded", EchoRefusal::TimeToLiveExceeded},
    {"Time exceeded: Hop limit", EchoRefusal::TimeToLiveExceeded},
    {"Destination Net Unreachable", EchoRefusal::NetworkUnreachable},
    {"Destination Net Unknown", EchoRefusal::NetworkUnreachable},
    {"Destination unreachable: No route", EchoRefusal::NetworkUnreachable},
    {"Destination unreachable: Beyond scope", EchoRefusal::NetworkUnreachable},
    {"Destination Host Unreachable", EchoRefusal::HostUnreachable},
    {"Destination Host Unknown", EchoRefusal::HostUnreachable},
    {"Destination unreachable: Address unreachable", EchoRefusal::HostUnreachable},
    {"Destination Protocol Unreachable", EchoRefusal::ProtocolUnreachable},
    {"Destination Port Unreachable", EchoRefusal::PortUnreachable},
    {"Destination unreachable: Port unreachable", EchoRefusal::PortUnreachable},
    {"Frag needed", EchoRefusal::PacketTooBig},
    {"Packet too big", EchoRefusal::PacketTooBig},
    {"Packet filtered", EchoRefusal::Forbidden},
    {"Prohibited", EchoRefusal::Forbidden},
    {"prohibited", EchoRefusal::Forbidden},
    {"policy", EchoRefusal::Forbidden},
    {"Destination", EchoRefusal::Other},
};

struct LocalMeaning {
    const char *words;
    End end;
};

constexpr LocalMeaning localFailures[] = {
    {"message too long", End::TooLong},
    {"packet size", End::TooLong},
    {"No route to host", End::NoRoute},
    {"Network is unreachable", End::NoRoute},
    {"Network is down", End::NoRoute},
    {"Cannot assign requested address", End::NoRoute},
    {"ping broadcast?", End::NotAllowed},
    {"sendmsg: Operation not permitted", End::Filtered},
    {"Operation not permitted", End::NotPermitted},
    {"Permission denied", End::NotPermitted},
    {"cap_net_raw", End::NotPermitted},
};

// A reply that is a copy, cut, damaged, or from elsewhere is marked behind its usual words, and is none.
std::optional<EchoOutcome> readReply(const QString &line)
{
    static const QRegularExpression form(QStringLiteral(
        R"(^(\d{1,5}) bytes from ([0-9A-Fa-f:.]+(?:%[^\s:]+)?): icmp_seq=1(?: ttl=\d{1,3})?(?: time=(\d{1,9}(?:\.\d{1,9})?) ms)?$)"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch() || match.captured(1).toInt() < echoHeaderSize)
        return std::nullopt;
    EchoOutcome outcome;
    outcome.end = End::Replied;
    outcome.dataSize = match.captured(1).toInt() - echoHeaderSize;
    outcome.reporter = match.captured(2);
    const QString time = match.captured(3);
    outcome.timeIsBound = time.isEmpty();
    outcome.nanoseconds = std::llround(time.toDouble() * 1e6);
    return outcome;
}

std::optional<EchoOutcome> readRefusal(const QString &line)
{
    static const QRegularExpression form(
        QStringLiteral(R"(^From ([0-9A-Fa-f:.]+(?:%[^\s:]+)?):? icmp_seq=1 (.*)$)"));
    const QRegularExpressionMatch match = form.match(line);
    if (!match.hasMatch())
        return std::nullopt;
    for (const Meaning &meaning : refusals) {
        if (!match.captured(2).contains(QLatin1String(meaning.words)))
            continue;
        EchoOutcome outcome = EchoOutcome::failed(End::Refused);
        outcome.refusal = meaning.refusal;
        outcome.reporter = match.captured(1);
        return outcome;
    }
    return std::nullopt;
}

std::optional<EchoOutcome> readLocalFailure(const QString &line)
{
    if (!line.startsWith(QStringLiteral("ping: ")))
        return std::nullopt;
    for (const LocalMeaning &meaning : localFailures) {
        if (line.contains(QLatin1String(meaning.words)))
            return EchoOutcome::failed(meaning.end);
    }
    return std::nullopt;
}

std::optional<EchoOutcome> readSummary(const QString &line)
{
    if (line.contains(QStringLiteral(" 0 received, "))
        && line.contains(QStringLiteral("packets transmitted, ")))
        return EchoOutcome::failed(End::Silent);
    return std::nullopt;
}

QString cleaned(QByteArrayView line)
{
    QString text = QString::fromUtf8(line.first(std::min(line.size(), longestLine))).trimmed();
    for (QChar &c : text) {
        if (!c.isPrint())
            c = u' ';
    }
    return text;
}

// Takes the next line off what is left; nothing when it is not complete.
std::optional<QString> takeLine(QByteArrayView &left)
{
    const qsizetype end = left.indexOf('\n');
    if (end < 0)
        return std::nullopt;
    const QString line = cleaned(left.first(end));
    left = left.sliced(end + 1);
    return line;
}

} // namespace

std::optional<EchoOutcome> readPingCommandOutput(QByteArrayView output)
{
    while (const auto line = takeLine(output)) {
        for (const auto read : {readReply, readRefusal, readLocalFailure, readSummary}) {
            if (auto outcome = read(*line))
                return outcome;
        }
    }
    return std::nullopt;
}

EchoOutcome undecidedPingCommandOutput(QByteArrayView output)
{
    const qsizetype end = output.indexOf('\n');
    return EchoOutcome::failed(End::Failed,
                               cleaned(end < 0 ? output : output.first(end)).left(longestReason));
}

} // namespace vandrel
