#include "tests/support/FakeSmtp.h"

#include <utility>

namespace vandrel::test {

void FakeSmtp::setAttachmentList(const QString &paths)
{
    record(QStringLiteral("AttachmentList"), paths);
}

void FakeSmtp::setMessageBody(const QString &text)
{
    record(QStringLiteral("MessageBody"), text);
}

void FakeSmtp::setMessageSubject(const QString &subject)
{
    record(QStringLiteral("MessageSubject"), subject);
}

void FakeSmtp::setFromAddress(const QString &address)
{
    record(QStringLiteral("FromAddress"), address);
}

void FakeSmtp::setCcAddress(const QString &addresses)
{
    record(QStringLiteral("CcAddress"), addresses);
}

void FakeSmtp::setToAddress(const QString &addresses)
{
    record(QStringLiteral("ToAddress"), addresses);
}

void FakeSmtp::setServerDomain(const QString &server)
{
    record(QStringLiteral("ServerDomain"), server);
}

void FakeSmtp::setSendNow(bool start)
{
    record(QStringLiteral("SendNow"), start ? QStringLiteral("True") : QStringLiteral("False"));
}

QStringList FakeSmtp::takeCalls()
{
    return std::exchange(m_calls, {});
}

void FakeSmtp::record(const QString &member, const QString &value)
{
    m_calls.append(member + QStringLiteral(" = ") + value);
    if (onCall)
        onCall(m_calls.last());
}

} // namespace vandrel::test
