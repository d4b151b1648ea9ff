#include "platform/ping/EchoWay.h"

namespace vandrel {

EchoFamily EchoQuestion::family() const
{
    return to.protocol() == QAbstractSocket::IPv6Protocol ? EchoFamily::IPv6 : EchoFamily::IPv4;
}

EchoOutcome EchoOutcome::failed(End end, const QString &detail)
{
    EchoOutcome outcome;
    outcome.end = end;
    outcome.detail = detail;
    return outcome;
}

} // namespace vandrel
