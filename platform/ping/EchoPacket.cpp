#include "platform/ping/EchoPacket.h"

#include <QtEndian>

namespace vandrel {

namespace {

// Type, code, checksum, identifier, sequence number.
constexpr qsizetype headerSize = 8;
constexpr qsizetype checksumAt = 2;
constexpr qsizetype identifierAt = 4;
constexpr qsizetype sequenceAt = 6;

// The longest packet, and the header of an IPv4 one without options, which an IPv6 packet's length leaves out.
constexpr qsizetype longestPacket = 65535;
constexpr qsizetype ipv4HeaderSize = 20;

constexpr quint8 request4 = 8;
constexpr quint8 reply4 = 0;
constexpr quint8 request6 = 128;
constexpr quint8 reply6 = 129;

quint8 octet(QByteArrayView octets, qsizetype at)
{
    return static_cast<quint8>(octets[at]);
}

EchoKey keyOf(QByteArrayView message)
{
    return {qFromBigEndian<quint16>(message.data() + identifierAt),
            qFromBigEndian<quint16>(message.data() + sequenceAt)};
}

// The sum that the protocols share (RFC 1071).
quint16 checksum(QByteArrayView octets)
{
    quint32 sum = 0;
    for (qsizetype at = 0; at < octets.size(); at += 2) {
        const quint32 low = at + 1 < octets.size() ? octet(octets, at + 1) : 0;
        sum += (static_cast<quint32>(octet(octets, at)) << 8U) + low;
    }
    while (sum > 0xFFFFU)
        sum = (sum & 0xFFFFU) + (sum >> 16U);
    return static_cast<quint16>(~sum & 0xFFFFU);
}

EchoRefusal unreachable4(quint8 code)
{
    switch (code) {
    case 0:
    case 6:
    case 11:
        return EchoRefusal::NetworkUnreachable;
    case 1:
    case 5:
    case 7:
    case 8:
    case 12:
        return EchoRefusal::HostUnreachable;
    case 2:
        return EchoRefusal::ProtocolUnreachable;
    case 3:
        return EchoRefusal::PortUnreachable;
    case 4:
        return EchoRefusal::PacketTooBig;
    case 9:
    case 10:
    case 13:
        return EchoRefusal::Forbidden;
    default:
        return EchoRefusal::Other;
    }
}

EchoRefusal unreachable6(quint8 code)
{
    switch (code) {
    case 0:
    case 2:
        return EchoRefusal::NetworkUnreachable;
    case 3:
        return EchoRefusal::HostUnreachable;
    case 4:
        return EchoRefusal::PortUnreachable;
    case 1:
    case 5:
    case 6:
        return EchoRefusal::Forbidden;
    default:
        return EchoRefusal::Other;
    }
}

} // namespace

qsizetype mostEchoData(EchoFamily family)
{
    return longestPacket - headerSize - (family == EchoFamily::IPv4 ? ipv4HeaderSize : 0);
}

QByteArray echoRequest(EchoFamily family, EchoKey key, const QByteArray &data)
{
    QByteArray message(headerSize, '\0');
    message.reserve(headerSize + data.size());
    message[0] = static_cast<char>(family == EchoFamily::IPv4 ? request4 : request6);
    qToBigEndian(key.identifier, message.data() + identifierAt);
    qToBigEndian(key.sequence, message.data() + sequenceAt);
    message += data;
    if (family == EchoFamily::IPv4)
        qToBigEndian(checksum(message), message.data() + checksumAt);
    return message;
}

std::optional<EchoReply> readEchoReply(EchoFamily family, QByteArrayView message)
{
    const quint8 wanted = family == EchoFamily::IPv4 ? reply4 : reply6;
    if (message.size() < headerSize || octet(message, 0) != wanted || octet(message, 1) != 0)
        return std::nullopt;
    return EchoReply{keyOf(message), message.sliced(headerSize)};
}

std::optional<EchoKey> readEchoRequestKey(EchoFamily family, QByteArrayView message)
{
    const quint8 wanted = family == EchoFamily::IPv4 ? request4 : request6;
    if (message.size() < headerSize || octet(message, 0) != wanted)
        return std::nullopt;
    return keyOf(message);
}

QByteArrayView withoutIPv4Header(QByteArrayView packet)
{
    if (packet.size() < ipv4HeaderSize || octet(packet, 0) >> 4U != 4)
        return {};
    const qsizetype size = (octet(packet, 0) & 0x0FU) * 4;
    if (size < ipv4HeaderSize || size > packet.size())
        return {};
    return packet.sliced(size);
}

EchoRefusal echoRefusal(EchoFamily family, quint8 type, quint8 code)
{
    constexpr quint8 unreachableType4 = 3;
    constexpr quint8 timeExceededType4 = 11;
    constexpr quint8 unreachableType6 = 1;
    constexpr quint8 tooBigType6 = 2;
    constexpr quint8 timeExceededType6 = 3;
    const bool isIPv4 = family == EchoFamily::IPv4;
    if (type == (isIPv4 ? unreachableType4 : unreachableType6))
        return isIPv4 ? unreachable4(code) : unreachable6(code);
    if (type == (isIPv4 ? timeExceededType4 : timeExceededType6))
        return EchoRefusal::TimeToLiveExceeded;
    return !isIPv4 && type == tooBigType6 ? EchoRefusal::PacketTooBig : EchoRefusal::Other;
}

} // namespace vandrel
