#include "platform/localip/LocalIP.h"

#include <utility>

#include <QPointer>

namespace vandrel {

LocalIP::LocalIP(Source source) : m_source(std::move(source)) { }

// Whoever is told may destroy this object before the next one is.
void LocalIP::setQuery(bool start)
{
    if (!start)
        return;
    const LocalFacts facts = m_source();
    const QHostAddress address = localAddress(facts);
    m_address = address.isNull() ? QString() : address.toString();
    m_domain = localDomain(facts);
    const bool hasNetwork = !facts.interfaces.isEmpty() || !address.isNull();
    const bool hasDomain = !m_domain.isEmpty();
    const QPointer<LocalIP> alive(this);
    if (!hasNetwork)
        Q_EMIT SocketError(true);
    if (alive && !hasDomain)
        Q_EMIT NoDomainName();
    if (alive && hasNetwork && address.isNull())
        Q_EMIT NoIPAddress();
}

} // namespace vandrel
