#pragma once

#include <memory>
#include <optional>
#include <vector>

#include <QByteArray>
#include <QHostAddress>

#include "platform/ping/EchoPacket.h"

namespace vandrel {

/// One request: what is sent whereto, and how long its reply may take.
struct EchoQuestion {
    /// IPv4 or IPv6, an IPv6 one with its scope where it needs one.
    QHostAddress to;
    /// No longer than mostEchoData().
    QByteArray data;
    /// In milliseconds, from the sending on; more than 0.
    int timeOut = 0;

    EchoFamily family() const;
};

/// What came of one request.
struct EchoOutcome {
    enum class End {
        Replied,
        /// Nothing came back in time.
        Silent,
        /// The wait was cancelled.
        Cancelled,
        /// Somebody on the way, or the host itself, sent an error message; `refusal` and `reporter` say more.
        Refused,
        /// This computer knows no way to the host.
        NoRoute,
        /// This computer does not send to that address: one of a whole network, or one it must not reach.
        NotAllowed,
        /// A rule of this computer's own firewall stopped the request.
        Filtered,
        /// The data is too long for an interface on this computer.
        TooLong,
        /// The system refused for another reason; `detail` says which.
        Failed,
        /// The program has no right to ask in this way; another way may do.
        NotPermitted
    };

    End end = End::Failed;
    /// The data that came back. Without a value the way cannot tell, and `dataSize` has its length all the same.
    std::optional<QByteArray> data;
    qsizetype dataSize = 0;
    /// From sending to arrival. Where `timeIsBound` is set it took that long at most.
    qint64 nanoseconds = 0;
    bool timeIsBound = false;
    /// Replies to this very request came that carried other data.
    bool otherDataCame = false;
    EchoRefusal refusal = EchoRefusal::Other;
    QString reporter;
    QString detail;

    static EchoOutcome failed(End end, const QString &detail = {});
};

/// What happens while a request waits for its reply.
class EchoPause
{
public:
    virtual ~EchoPause() = default;

    /// Called a few dozen times a second. False ends the wait.
    virtual bool passTurn() = 0;
};

/// A way to send a request and to wait for its reply. Asking needs no preparation and leaves nothing behind.
class EchoWay
{
public:
    virtual ~EchoWay() = default;

    virtual EchoOutcome ask(const EchoQuestion &question, EchoPause &pause) = 0;

    /// The ways that the system knows, the best first.
    static std::vector<std::shared_ptr<EchoWay>> ofSystem();
};

} // namespace vandrel
