#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayView>

namespace vandrel {

/// Echo messages of the Internet protocols' control protocol: RFC 792 for IPv4, RFC 4443 for IPv6. Whatever is read
/// here has come from the network, and may be cut, wrong, or somebody else's.

enum class EchoFamily { IPv4, IPv6 };

/// How much data a request can carry: what 16 bits of length leave beside the headers.
qsizetype mostEchoData(EchoFamily family);

/// What tells one echo from another.
struct EchoKey {
    quint16 identifier = 0;
    quint16 sequence = 0;

    bool operator==(const EchoKey &) const = default;
};

/// A request, from its type on. `data` is no longer than mostEchoData(). The checksum is filled in for IPv4; for IPv6
/// the system does it, which alone knows the addresses that it covers.
QByteArray echoRequest(EchoFamily family, EchoKey key, const QByteArray &data);

/// An echo reply as read; the data lies in the octets it was read from.
struct EchoReply {
    EchoKey key;
    QByteArrayView data;
};

/// Reads a message from its type on; nothing when it is no echo reply.
std::optional<EchoReply> readEchoReply(EchoFamily family, QByteArrayView message);

/// Whose request an error report is about: `message` begins like the request as it was sent. Nothing when it does not
/// begin with an echo request.
std::optional<EchoKey> readEchoRequestKey(EchoFamily family, QByteArrayView message);

/// What follows the header of an IPv4 packet (RFC 791); empty when the header is cut or no header.
QByteArrayView withoutIPv4Header(QByteArrayView packet);

/// What an error message says about the request.
enum class EchoRefusal {
    NetworkUnreachable,
    HostUnreachable,
    ProtocolUnreachable,
    PortUnreachable,
    PacketTooBig,
    Forbidden,
    TimeToLiveExceeded,
    Other
};

/// The meaning of an error message's type and code.
EchoRefusal echoRefusal(EchoFamily family, quint8 type, quint8 code);

} // namespace vandrel
