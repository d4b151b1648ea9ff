#pragma once

#include <deque>
#include <memory>

#include <QObject>
#include <QString>
#include <QTimer>

#include "platform/mail/smtp/MailExchangers.h"
#include "platform/mail/smtp/MessageFeed.h"
#include "platform/mail/smtp/SmtpSession.h"
#include "platform/mail/smtp/SmtpTimes.h"
#include "platform/net/ServerAddress.h"

namespace vandrel {

class DriveView;

/// One message on its way: it is built, its server is found, it is handed over.
///
/// The server field is read as ServerAddress does, with "smtp" and "smtps". Without a port, a server that is
/// told a login is asked at the port for submissions (587, RFC 6409), any other at 25, and smtps:// at 465. A
/// bare name that has no address of its own is taken for a mail domain: its mail exchangers are tried in
/// order of preference at port 25, as long as none of them has learnt of the message.
///
/// Signals come from the event loop: status texts, then one of delivered() and failed(), then finished().
/// Their handlers must not destroy the delivery; destroying it elsewhere ends everything at once.
class SmtpDelivery : public QObject
{
    Q_OBJECT

public:
    /// `exchangers` outlives the delivery.
    SmtpDelivery(MailExchangers &exchangers, const SmtpTimes &times);
    ~SmtpDelivery() override;

    void start(const MailDraft &draft, const QString &server, const std::shared_ptr<const DriveView> &drives);

Q_SIGNALS:
    void status(const QString &text);
    void delivered(const QString &reply);
    void failed(const QString &text);
    /// `wasConnected` when a server could be reached.
    void finished(bool wasConnected);

private:
    static ServerAddress addressOf(const QString &server);
    void connectTo(const QString &host);
    void connectToNext();
    void sessionFailed(const QString &text, bool beforeEnvelope, bool unknownHost);
    void sessionFinished();
    bool isBareDomain() const;
    void askForExchangers();
    void useExchangers(const std::vector<MailExchanger> &exchangers);
    void end(const QString &problem);

    MailExchangers &m_exchangers;
    const SmtpTimes m_times;
    QTimer m_asking;
    ServerAddress m_address;
    MessageFeed m_feed;
    MailEnvelope m_envelope;
    std::unique_ptr<SmtpSession> m_session;
    bool m_askedForExchangers = false;
    // Mail exchangers that have not been tried yet.
    std::deque<QString> m_hosts;
    // Why the host tried last did not take the message, while another may.
    QString m_problem;
    bool m_tryNext = false;
    bool m_wasConnected = false;
};

} // namespace vandrel
