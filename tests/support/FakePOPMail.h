#pragma once

#include <functional>

#include <QStringList>

#include "controls/POPMail.h"

namespace vandrel::test {

/// A mailbox that does nothing but record what it is told, in order: "POPServer = host", "RetrieveNow = True". A
/// test raises its events by emitting its signals.
class FakePOPMail final : public POPMail
{
    Q_OBJECT

public:
    void setPOPServer(const QString &server) override;
    void setPOPUser(const QString &user) override;
    void setPOPPassword(const QString &password) override;
    void setMailNumber(std::int16_t number) override;
    std::int16_t MailNumber() const override { return number; }
    std::int16_t MailCount() const override;
    void setConnectNow(bool start) override;
    void setDisconnectNow(bool start) override;
    void setRetrieveNow(bool start) override;
    void setListNow(bool start) override;
    void setDeleteNow(bool start) override;

    /// What was told since the last time this was asked.
    QStringList takeCalls();

    std::int16_t number = 0;
    std::int16_t count = 0;
    /// Runs when MailCount is read, before the value is given.
    std::function<void()> onCount;
    /// Runs within every call, after it has been recorded.
    std::function<void(const QString &call)> onCall;

private:
    void record(const QString &member, const QString &value);
    void record(const QString &trigger, bool value);

    QStringList m_calls;
};

} // namespace vandrel::test
