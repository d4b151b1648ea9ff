#include "tests/support/FakeFTPClient.h"

#include <utility>

namespace vandrel::test {

QStringList FakeFTPClient::takeCalls()
{
    return std::exchange(m_calls, {});
}

void FakeFTPClient::record(const char *member, const QString &value)
{
    m_calls.append(QStringLiteral("%1 = %2").arg(QString::fromLatin1(member), value));
}

void FakeFTPClient::record(const char *trigger, bool value)
{
    record(trigger, value ? QStringLiteral("True") : QStringLiteral("False"));
}

} // namespace vandrel::test
