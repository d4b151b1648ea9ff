#pragma once

#include <deque>
#include <functional>
#include <optional>

#include <QObject>

#include "platform/mail/pop/PopMessageReader.h"
#include "platform/mail/pop/PopReply.h"
#include "platform/net/LineConnection.h"
#include "platform/net/ServerAddress.h"

namespace vandrel {

/// Questions to one POP3 server and its answers, which come in the order of the questions. A server that answers what
/// was not asked, or what is no answer at all, is not spoken to any more.
///
/// Handlers and signals come from the event loop. After ended() no handler is called any more. The handlers of lines and
/// blocks may ask for more, but not abort the dialogue: their caller is still reading.
class PopDialogue : public QObject
{
    Q_OBJECT

public:
    using Answered = std::function<void(const PopReply &)>;
    using Line = std::function<void(const QByteArray &)>;
    using Block = std::function<void(QByteArrayView)>;

    explicit PopDialogue(const LineConnection::Limits &limits, QObject *parent = nullptr);

    /// Connects; `greeted` gets the greeting.
    void open(const ServerAddress &server, Answered greeted);
    /// Sends a command. `awaited` names it in messages, such as "the answer to STAT"; a command may hold a password and
    /// is never shown.
    void ask(const QByteArray &command, const QString &awaited, Answered answered);
    /// The same for a login in steps: `answered` is called with each continuation, which it answers with reply(), and
    /// with the result.
    void askInSteps(const QByteArray &command, const QString &awaited, Answered answered);
    void reply(const QByteArray &line);
    /// The same for an answer in lines: `line` gets each of them, `answered` comes behind the last one. More than
    /// `largest` octets of lines end the dialogue.
    void
    askLines(const QByteArray &command, const QString &awaited, qint64 largest, Line line, Answered answered);
    /// The same for a message: `block` gets its octets in pieces, `answered` comes behind the last one.
    void askMessage(const QByteArray &command, const QString &awaited, Block block, Answered answered);
    /// Encrypts the connection after the server agreed to it.
    void startTls(std::function<void()> encrypted);
    /// Ends the connection at once; nothing is heard of it any more.
    void abort();
    /// Questions that wait for their answers.
    qsizetype outstanding() const { return static_cast<qsizetype>(m_exchanges.size()); }

    bool isEncrypted() const { return m_connection.isEncrypted(); }
    QString tlsVersion() const { return m_connection.tlsVersion(); }

Q_SIGNALS:
    void progress(const QString &text);
    /// The connection has ended by itself. `problem` is a sentence; `byServer` when it repeats what the server said.
    void ended(const QString &problem, bool byServer);

private:
    enum class Kind {
        OneLine,
        Steps,
        Lines,
        Message,
    };

    struct Exchange {
        Kind kind = Kind::OneLine;
        QString awaited;
        Answered answered;
        Line line;
        Block block;
        qint64 largest = 0;
    };

    void send(const QByteArray &command);
    void expect(Exchange exchange);
    void awaitNext();
    void received(const QByteArray &line);
    void receivedReply(const QByteArray &line);
    void receivedUnasked(const PopReply &reply);
    void receivedBodyLine(const QByteArray &line);
    void receivedBlock(QByteArrayView octets);
    void finishExchange(PopReply reply);
    void connectionClosed();
    void end(const QString &problem, bool byServer);

    LineConnection m_connection;
    std::deque<Exchange> m_exchanges;
    // The reply line of the answer whose lines are coming.
    std::optional<PopReply> m_begun;
    qint64 m_bodyOctets = 0;
    std::optional<PopMessageReader> m_reader;
    std::function<void()> m_encrypted;
};

} // namespace vandrel
