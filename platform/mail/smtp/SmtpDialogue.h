#pragma once

#include <functional>

#include <QObject>

#include "platform/mail/smtp/SmtpReply.h"
#include "platform/mail/smtp/SmtpTimes.h"
#include "platform/net/LineConnection.h"

namespace vandrel {

/// Commands to one SMTP server and its replies, one at a time. A server that replies to what was not asked,
/// or with what is no reply, is not spoken to any more.
///
/// Handlers and signals come from the event loop; they must not destroy the dialogue. After ended() no
/// handler is called any more.
class SmtpDialogue : public QObject
{
    Q_OBJECT

public:
    using Answered = std::function<void(const SmtpReply &)>;
    /// Makes the server's words fit to be seen.
    using Censor = std::function<QString(const QString &)>;

    explicit SmtpDialogue(const SmtpTimes &times, QObject *parent = nullptr);

    void setCensor(Censor censor) { m_censor = std::move(censor); }
    /// Connects; `greeted` gets the greeting.
    void open(const QString &host, quint16 port, bool implicitTls, Answered greeted);
    /// Sends a command. `awaited` completes "waiting for"; a command may hold a password and is never shown.
    /// Does nothing once the connection has gone: ended() is on its way then.
    void ask(const QByteArray &command, const QString &awaited, int milliseconds, Answered answered);
    /// Waits for a reply to what was written.
    void expect(const QString &awaited, int milliseconds, Answered answered);
    /// Octets of the message; see LineConnection::write(). The server has nothing to say until it ends.
    [[nodiscard]] bool write(const QByteArray &octets);
    /// From now on the server has to take what is written.
    void awaitProgress(const QString &awaited, int milliseconds);
    /// Encrypts the connection after the server agreed to it.
    void startTls(std::function<void()> encrypted);
    /// Ends the connection in good order; ended() follows.
    void close();
    /// Ends the connection at once; ended() does not follow.
    void abort();

    /// What the server said, for a person.
    QString words(const SmtpReply &reply) const { return m_censor(reply.words()); }
    const LineConnection &connection() const { return m_connection; }

Q_SIGNALS:
    void progress(const QString &text);
    void connected();
    /// Octets have left; `unsent` still wait.
    void sent(qint64 unsent);
    void drained();
    /// The connection has ended, or never was. `problem` is a sentence, `unknownHost` true when the host has
    /// no address.
    void ended(const QString &problem, bool unknownHost);

private:
    void take(const QByteArray &line);
    void takeReply();
    void end(const QString &problem, bool unknownHost);

    const SmtpTimes m_times;
    LineConnection m_connection;
    SmtpReplyReader m_reader;
    Censor m_censor = [](const QString &words) { return words; };
    Answered m_answered;
    QString m_awaited;
    std::function<void()> m_encrypted;
    bool m_over = false;
};

} // namespace vandrel
