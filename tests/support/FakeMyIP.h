#pragma once

#include <functional>

#include "controls/MyIP.h"

namespace vandrel::test {

/// A local-address control that asks nobody: its answers are what a test has put there, and `onQuery` raises the
/// events of a query, from inside it.
class FakeMyIP final : public MyIP
{
    Q_OBJECT

public:
    QString DomainName() const override { return domain; }
    QString IPAddress() const override { return address; }
    void setQuery(bool start) override;

    QString domain;
    QString address;
    std::function<void()> onQuery;
    /// How often each value was assigned.
    int queries = 0;
    int endings = 0;
};

} // namespace vandrel::test
