// Packets and error reports from the network, and what a program called ping prints: the first octet chooses which.

#include <cstddef>
#include <cstdint>

#include <QHostAddress>

#include "platform/ping/EchoPacket.h"
#include "platform/ping/EchoStatus.h"
#include "platform/ping/PingCommandOutput.h"
#include "platform/ping/PingTarget.h"

using namespace vandrel;

namespace {

// What the user is told is one line, and no longer than a box can show.
void checkStatus(const EchoOutcome &outcome)
{
    const EchoQuestion question{QHostAddress(QHostAddress::LocalHost), "abc", 1000};
    const QString status = echoStatus(QStringLiteral("host"), question, outcome);
    if (status.isEmpty() || status.size() > 2000 || status.contains(u'\n') || status.contains(u'\r'))
        qFatal("a status that cannot be shown");
}

void readPacket(QByteArrayView octets)
{
    for (const EchoFamily family : {EchoFamily::IPv4, EchoFamily::IPv6}) {
        const auto reply = readEchoReply(family, octets);
        if (reply && reply->data.size() + 8 != octets.size())
            qFatal("data that did not come");
        (void)readEchoRequestKey(family, octets);
    }
    const QByteArrayView rest = withoutIPv4Header(octets);
    if (rest.size() + 20 > octets.size() && !rest.isEmpty())
        qFatal("more than came");
    (void)readEchoReply(EchoFamily::IPv4, rest);
}

void readWords(QByteArrayView octets)
{
    const auto outcome = readPingCommandOutput(octets);
    if (outcome && (outcome->dataSize < 0 || outcome->dataSize > 99999 || outcome->nanoseconds < 0))
        qFatal("a reply that cannot be");
    checkStatus(outcome ? *outcome : undecidedPingCommandOutput(octets));
}

void readHost(QByteArrayView octets)
{
    const PingTarget target = PingTarget::parse(QString::fromUtf8(octets));
    if (target.problem.isEmpty() == (target.address.isNull() && target.name.isEmpty()))
        qFatal("neither a host nor a problem");
    if (target.problem.size() > 200)
        qFatal("a problem that cannot be shown");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size == 0)
        return 0;
    const QByteArrayView octets(reinterpret_cast<const char *>(data) + 1, static_cast<qsizetype>(size - 1));
    switch (data[0] % 3) {
    case 0:
        readPacket(octets);
        break;
    case 1:
        readWords(octets);
        break;
    default:
        readHost(octets);
        break;
    }
    return 0;
}
