#include "tests/support/FakePOPMail.h"

#include <utility>

namespace vandrel::test {

void FakePOPMail::setPOPServer(const QString &server)
{
    record(QStringLiteral("POPServer"), server);
}

void FakePOPMail::setPOPUser(const QString &user)
{
    record(QStringLiteral("POPUser"), user);
}

void FakePOPMail::setPOPPassword(const QString &password)
{
    record(QStringLiteral("POPPassword"), password);
}

void FakePOPMail::setMailNumber(std::int16_t newNumber)
{
    number = newNumber;
    record(QStringLiteral("MailNumber"), QString::number(number));
}

std::int16_t FakePOPMail::MailCount() const
{
    if (onCount)
        onCount();
    return count;
}

void FakePOPMail::setConnectNow(bool start)
{
    record(QStringLiteral("ConnectNow"), start);
}

void FakePOPMail::setDisconnectNow(bool start)
{
    record(QStringLiteral("DisconnectNow"), start);
}

void FakePOPMail::setRetrieveNow(bool start)
{
    record(QStringLiteral("RetrieveNow"), start);
}

void FakePOPMail::setListNow(bool start)
{
    record(QStringLiteral("ListNow"), start);
}

void FakePOPMail::setDeleteNow(bool start)
{
    record(QStringLiteral("DeleteNow"), start);
}

QStringList FakePOPMail::takeCalls()
{
    return std::exchange(m_calls, {});
}

void FakePOPMail::record(const QString &member, const QString &value)
{
    m_calls.append(member + QStringLiteral(" = ") + value);
    if (onCall)
        onCall(m_calls.last());
}

void FakePOPMail::record(const QString &trigger, bool value)
{
    record(trigger, value ? QStringLiteral("True") : QStringLiteral("False"));
}

} // namespace vandrel::test
