#pragma once

#include <functional>

#include <QStringList>

#include "controls/Smtp.h"

namespace vandrel::test {

/// A mail sender that does nothing but record what it is told, in order: "ToAddress = a@b", "SendNow = True". A
/// test raises its events by emitting its signals.
class FakeSmtp final : public Smtp
{
    Q_OBJECT

public:
    void setAttachmentList(const QString &paths) override;
    void setMessageBody(const QString &text) override;
    void setMessageSubject(const QString &subject) override;
    void setFromAddress(const QString &address) override;
    void setCcAddress(const QString &addresses) override;
    void setToAddress(const QString &addresses) override;
    void setServerDomain(const QString &server) override;
    void setSendNow(bool start) override;

    /// What was told since the last time this was asked.
    QStringList takeCalls();

    /// Runs within every call, after it has been recorded.
    std::function<void(const QString &call)> onCall;

private:
    void record(const QString &member, const QString &value);

    QStringList m_calls;
};

} // namespace vandrel::test
