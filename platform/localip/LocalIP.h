#pragma once

#include <functional>

#include "controls/MyIP.h"
#include "platform/localip/LocalFacts.h"

namespace vandrel {

/// The computer's own address and domain, from what the system knows of them.
class LocalIP final : public MyIP
{
    Q_OBJECT

public:
    using Source = std::function<LocalFacts()>;

    /// `source` is asked at every query.
    explicit LocalIP(Source source = LocalFacts::ofThisComputer);

    QString DomainName() const override { return m_domain; }
    QString IPAddress() const override { return m_address; }
    void setQuery(bool start) override;

private:
    const Source m_source;
    QString m_domain;
    QString m_address;
};

} // namespace vandrel
