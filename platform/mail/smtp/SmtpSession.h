#pragma once

#include <deque>
#include <memory>
#include <optional>

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>

#include "platform/mail/smtp/MessageFeed.h"
#include "platform/mail/smtp/SmtpDialogue.h"
#include "platform/mail/smtp/SmtpLogin.h"
#include "platform/mail/smtp/SmtpReply.h"
#include "platform/mail/smtp/SmtpTimes.h"

namespace vandrel {

/// Where a message is handed over.
struct SmtpServer {
    QString host;
    quint16 port = 25;
    bool implicitTls = false;
    std::optional<SmtpLogin> login;
};

/// Hands one message to one server: greeting, encryption, login, envelope, message, farewell (RFC 5321, RFC
/// 3207, RFC 4954, RFC 1870, RFC 6152, RFC 6531).
///
/// - Encryption is used when it is offered, and what goes wrong with it ends the session: there is no way
///   back to an open connection.
/// - A login travels only on an encrypted connection, or to this machine; elsewhere only in a form that hides
///   the password.
/// - When one recipient is refused, nobody gets the message.
/// - The message is closed only when all of it was sent; whatever happens before, the server has no whole
///   message.
///
/// Signals come from the event loop: status texts, then one of delivered() and failed(), then finished().
/// Their handlers must not destroy the session; destroying it elsewhere ends everything at once.
class SmtpSession : public QObject
{
    Q_OBJECT

public:
    /// `feed` is prepared, has been asked for nothing yet, and outlives the session.
    SmtpSession(SmtpServer server, MailEnvelope envelope, MessageFeed &feed, const SmtpTimes &times);
    ~SmtpSession() override;

    void start();
    /// True once the server could be reached.
    bool wasConnected() const { return m_wasConnected; }

Q_SIGNALS:
    /// One line, without a line break.
    void status(const QString &text);
    /// The server has the message; `reply` is what it said.
    void delivered(const QString &reply);
    /// `text` says why nobody, or perhaps somebody, got the message. `beforeEnvelope` when the server never
    /// learnt of the message, so that another may be tried; `unknownHost` when the host has no address.
    void failed(const QString &text, bool beforeEnvelope, bool unknownHost);
    /// The connection is gone.
    void finished();

private:
    enum class Stage { Opening, Envelope, Message, Confirming, Leaving };
    using Step = void (SmtpSession::*)(const SmtpReply &);

    void ask(const QByteArray &command, const QString &awaited, Step answered);
    void greeted(const SmtpReply &reply);
    void sayHello();
    void helloAnswered(const SmtpReply &reply);
    void oldHelloAnswered(const SmtpReply &reply);
    void startTlsAnswered(const SmtpReply &reply);
    void useConnection();
    void logIn();
    void logInAnswered(const SmtpReply &reply);
    void logInCancelled(const SmtpReply &reply);
    void sendEnvelope();
    QString obstacle() const;
    void senderAnswered(const SmtpReply &reply);
    void askRecipient();
    void recipientAnswered(const SmtpReply &reply);
    void refuseRecipients();
    void dataAnswered(const SmtpReply &reply);
    void takeBlock(const QByteArray &octets);
    void sendBlocks();
    void endMessage();
    void showProgress(qint64 unsent);
    void confirmed(const SmtpReply &reply);
    void feedFailed(const QString &text);

    QString refusal(const QString &what, const SmtpReply &reply) const;
    void fail(const QString &text);
    void leave();
    void connectionEnded(const QString &problem, bool unknownHost);

    SmtpServer m_server;
    const MailEnvelope m_envelope;
    MessageFeed &m_feed;
    const SmtpTimes m_times;
    SmtpDialogue m_dialogue;
    Stage m_stage = Stage::Opening;
    SmtpServices m_services;
    bool m_wasConnected = false;

    std::size_t m_recipient = 0;
    QStringList m_refused;

    std::deque<QByteArray> m_blocks;
    bool m_messageEnded = false;
    qint64 m_written = 0;
    int m_shownTenths = 0;
    QElapsedTimer m_lastShown;
};

} // namespace vandrel
