#pragma once

#include <QtGlobal>

#include "platform/ping/EchoWay.h"

namespace vandrel {

/// Asks through a socket of this program: a datagram socket of the control protocol, which needs no right but the
/// system's leave for the user's group (net.ipv4.ping_group_range), or a raw one, which needs CAP_NET_RAW.
class LinuxEchoSocket final : public EchoWay
{
public:
    enum class Kind { Datagram, Raw };

    explicit LinuxEchoSocket(Kind kind);

    EchoOutcome ask(const EchoQuestion &question, EchoPause &pause) override;

private:
    const Kind m_kind;
    /// The raw socket's mark on its requests; the system marks those of a datagram socket.
    const quint16 m_identifier;
    quint16 m_sequence = 0;
};

} // namespace vandrel
