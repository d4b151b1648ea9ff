#include "platform/mail/smtp/SmtpSender.h"

#include <utility>

#include "controls/DriveView.h"
#include "platform/mail/smtp/SmtpDelivery.h"
#include "platform/net/TlsTrust.h"
#include "runtime/EventGate.h"
#include "runtime/Events.h"

namespace vandrel {

SmtpSender::SmtpSender(std::shared_ptr<const DriveView> drives,
                       const SmtpTimes &times,
                       std::unique_ptr<MailExchangers> exchangers)
    : m_drives(std::move(drives)), m_times(times),
      m_exchangers(exchangers ? std::move(exchangers) : std::make_unique<DnsMailExchangers>())
{
    loadTls();
}

SmtpSender::~SmtpSender() = default;

void SmtpSender::setAttachmentList(const QString &paths)
{
    m_next.draft.attachments = paths;
}

void SmtpSender::setMessageBody(const QString &text)
{
    m_next.draft.body = text;
}

void SmtpSender::setMessageSubject(const QString &subject)
{
    m_next.draft.subject = subject;
}

void SmtpSender::setFromAddress(const QString &address)
{
    m_next.draft.from = address;
}

void SmtpSender::setCcAddress(const QString &addresses)
{
    m_next.draft.cc = addresses;
}

void SmtpSender::setToAddress(const QString &addresses)
{
    m_next.draft.to = addresses;
}

void SmtpSender::setServerDomain(const QString &server)
{
    m_next.server = server;
}

void SmtpSender::setSendNow(bool start)
{
    if (!start)
        return;
    m_waiting.push_back(m_next);
    if (!m_delivery)
        startNext();
}

void SmtpSender::raise(std::function<void()> event)
{
    EventGate::raise(this, std::move(event));
}

void SmtpSender::startNext()
{
    if (m_waiting.empty())
        return;
    const Job job = std::move(m_waiting.front());
    m_waiting.pop_front();
    m_delivery = std::make_unique<SmtpDelivery>(*m_exchangers, m_times);
    onEvent(m_delivery.get(), &SmtpDelivery::status, this, [this](const QString &text) {
        raise([this, text] { Q_EMIT StatusText(text + QStringLiteral("\r\n")); });
    });
    onEvent(m_delivery.get(), &SmtpDelivery::delivered, this,
            [this](const QString &reply) { raise([this, reply] { Q_EMIT MailSent(reply); }); });
    onEvent(m_delivery.get(), &SmtpDelivery::failed, this,
            [this](const QString &text) { raise([this, text] { Q_EMIT Error(text); }); });
    onEvent(m_delivery.get(), &SmtpDelivery::finished, this, &SmtpSender::finish);
    raise([this] { Q_EMIT Busy(true); });
    m_delivery->start(job.draft, job.server, m_drives);
}

void SmtpSender::finish(bool wasConnected)
{
    m_delivery.release()->deleteLater();
    if (wasConnected)
        raise([this] { Q_EMIT Disconnected(true); });
    raise([this] { Q_EMIT Busy(false); });
    startNext();
}

} // namespace vandrel
