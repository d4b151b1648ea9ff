#include "tests/support/FakePing.h"

#include <utility>

#include <QPointer>

namespace vandrel::test {

void FakePing::setDataToSend(const QString &data)
{
    m_data = data;
    record(QStringLiteral("DataToSend"), data);
}

void FakePing::setHost(const QString &host)
{
    m_host = host;
    record(QStringLiteral("Host"), host);
}

// What a test does within the call may take the control away.
void FakePing::setPing(bool start)
{
    const QPointer<FakePing> alive(this);
    record(QStringLiteral("Ping"), start ? QStringLiteral("True") : QStringLiteral("False"));
    if (alive && start)
        ping();
}

void FakePing::setTimeOut(qint16 milliseconds)
{
    record(QStringLiteral("TimeOut"), QString::number(milliseconds));
}

QStringList FakePing::takeCalls()
{
    return std::exchange(m_calls, {});
}

void FakePing::record(const QString &member, const QString &value)
{
    const QString call = member + QStringLiteral(" = ") + value;
    m_calls.append(call);
    const auto within = onCall;
    if (within)
        within(call);
}

void FakePing::ping()
{
    Outcome outcome;
    if (answer)
        outcome = answer(m_host, m_data);
    else
        outcome = {QStringLiteral("Reply from %1").arg(m_host), false, m_data,
                   static_cast<quint16>(m_data.size()), 0};
    if (outcome.failed) {
        outcome.echo = m_outcome.echo;
        outcome.size = m_outcome.size;
        outcome.time = m_outcome.time;
    }
    m_outcome = outcome;
}

} // namespace vandrel::test
