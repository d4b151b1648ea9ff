#pragma once

#include <deque>
#include <functional>
#include <memory>

#include "controls/Smtp.h"
#include "platform/mail/compose/OutgoingMail.h"
#include "platform/mail/smtp/MailExchangers.h"
#include "platform/mail/smtp/SmtpTimes.h"

namespace vandrel {

class DriveView;
class SmtpDelivery;

/// The suite's own sender of mail. What the server field may hold is said at SmtpDelivery.
class SmtpSender final : public Smtp
{
    Q_OBJECT

public:
    /// `drives` turns the attachments' DOS-style paths into native ones; never null. `exchangers` answers
    /// which hosts take mail for a domain; the system's resolver where it is null.
    explicit SmtpSender(std::shared_ptr<const DriveView> drives,
                        const SmtpTimes &times = {},
                        std::unique_ptr<MailExchangers> exchangers = nullptr);
    ~SmtpSender() override;

    void setAttachmentList(const QString &paths) override;
    void setMessageBody(const QString &text) override;
    void setMessageSubject(const QString &subject) override;
    void setFromAddress(const QString &address) override;
    void setCcAddress(const QString &addresses) override;
    void setToAddress(const QString &addresses) override;
    void setServerDomain(const QString &server) override;
    void setSendNow(bool start) override;

private:
    struct Job {
        MailDraft draft;
        QString server;
    };

    void raise(std::function<void()> event);
    void startNext();
    void finish(bool wasConnected);

    const std::shared_ptr<const DriveView> m_drives;
    const SmtpTimes m_times;
    const std::unique_ptr<MailExchangers> m_exchangers;
    Job m_next;
    std::deque<Job> m_waiting;
    std::unique_ptr<SmtpDelivery> m_delivery;
};

} // namespace vandrel
