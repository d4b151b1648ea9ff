#include "platform/mail/pop/PopDialogue.h"

#include <utility>

namespace vandrel {

PopDialogue::PopDialogue(const LineConnection::Limits &limits, QObject *parent) : QObject(parent)
{
    m_connection.setLimits(limits);
    connect(&m_connection, &LineConnection::progress, this, &PopDialogue::progress);
    connect(&m_connection, &LineConnection::connected, this, &PopDialogue::awaitNext);
    connect(&m_connection, &LineConnection::encrypted, this, [this] { m_encrypted(); });
    connect(&m_connection, &LineConnection::lineReceived, this, &PopDialogue::received);
    connect(&m_connection, &LineConnection::blockReceived, this, &PopDialogue::receivedBlock);
    connect(&m_connection, &LineConnection::closed, this, &PopDialogue::connectionClosed);
    connect(&m_connection, &LineConnection::failed, this,
            [this](LineConnection::Failure, const QString &text) { end(text, false); });
}

void PopDialogue::open(const ServerAddress &server, Answered greeted)
{
    m_exchanges.push_back({Kind::OneLine, tr("the greeting"), std::move(greeted), {}, {}, 0});
    m_connection.open(server.host, server.port, server.implicitTls);
}

void PopDialogue::ask(const QByteArray &command, const QString &awaited, Answered answered)
{
    send(command);
    expect({Kind::OneLine, awaited, std::move(answered), {}, {}, 0});
}

void PopDialogue::askInSteps(const QByteArray &command, const QString &awaited, Answered answered)
{
    send(command);
    expect({Kind::Steps, awaited, std::move(answered), {}, {}, 0});
}

void PopDialogue::askLines(
    const QByteArray &command, const QString &awaited, qint64 largest, Line line, Answered answered)
{
    send(command);
    expect({Kind::Lines, awaited, std::move(answered), std::move(line), {}, largest});
}

void PopDialogue::askMessage(const QByteArray &command,
                             const QString &awaited,
                             Block block,
                             Answered answered)
{
    send(command);
    expect({Kind::Message, awaited, std::move(answered), {}, std::move(block), 0});
}

void PopDialogue::reply(const QByteArray &line)
{
    send(line);
}

void PopDialogue::startTls(std::function<void()> encrypted)
{
    m_encrypted = std::move(encrypted);
    m_connection.startTls();
}

void PopDialogue::abort()
{
    m_connection.abort();
    m_exchanges.clear();
}

// What cannot be sent is sent on a connection that has just ended, of which its signal tells.
void PopDialogue::send(const QByteArray &command)
{
    if (m_connection.sendLine(command) || !m_connection.isOpen())
        return;
    QMetaObject::invokeMethod(
        this, [this] { end(tr("A command could not be sent to \"%1\".").arg(m_connection.host()), false); },
        Qt::QueuedConnection);
}

void PopDialogue::expect(Exchange exchange)
{
    m_exchanges.push_back(std::move(exchange));
    if (m_exchanges.size() == 1)
        awaitNext();
}

void PopDialogue::awaitNext()
{
    if (m_exchanges.empty())
        m_connection.stopAwaiting();
    else
        m_connection.await(m_exchanges.front().awaited);
}

void PopDialogue::received(const QByteArray &line)
{
    if (m_begun)
        receivedBodyLine(line);
    else
        receivedReply(line);
}

void PopDialogue::receivedReply(const QByteArray &line)
{
    const PopReply reply = PopReply::parse(line);
    if (m_exchanges.empty()) {
        receivedUnasked(reply);
        return;
    }
    const Kind kind = m_exchanges.front().kind;
    if (reply.kind == PopReply::Kind::Malformed
        || (reply.kind == PopReply::Kind::Continuation && kind != Kind::Steps)) {
        end(tr(R"("%1" answered "%2", which is no answer of a POP3 server, while %3 was awaited.)")
                .arg(m_connection.host(), popText(line), m_exchanges.front().awaited),
            false);
    } else if (reply.kind == PopReply::Kind::Continuation) {
        awaitNext();
        // A copy: the answer to the step may end the dialogue, and the handler with it.
        const Answered answered = m_exchanges.front().answered;
        answered(reply);
    } else if (!reply.isOk() || kind == Kind::OneLine || kind == Kind::Steps) {
        finishExchange(reply);
    } else {
        m_begun = reply;
        m_bodyOctets = 0;
        if (kind == Kind::Message) {
            m_reader.emplace(m_connection.lineHadCarriageReturn());
            m_connection.setReading(LineConnection::Reading::Blocks);
        }
    }
}

void PopDialogue::receivedUnasked(const PopReply &reply)
{
    const QString host = m_connection.host();
    if (reply.kind == PopReply::Kind::Refused)
        end(tr("\"%1\" has ended the session: %2").arg(host, reply.text()), true);
    else
        end(tr(R"("%1" sent "%2" without being asked; its answers can no longer be told apart.)")
                .arg(host, reply.text()),
            false);
}

void PopDialogue::receivedBodyLine(const QByteArray &line)
{
    m_bodyOctets += line.size() + 2;
    if (line == ".")
        finishExchange(*m_begun);
    else if (m_bodyOctets > m_exchanges.front().largest)
        end(tr("\"%1\" does not come to an end with %2.")
                .arg(m_connection.host(), m_exchanges.front().awaited),
            false);
    else
        m_exchanges.front().line(line.startsWith('.') ? line.mid(1) : line);
}

void PopDialogue::receivedBlock(QByteArrayView octets)
{
    const qsizetype read = m_reader->read(octets, m_exchanges.front().block);
    if (!m_reader->isAtEnd())
        return;
    m_reader.reset();
    m_connection.unread(octets.size() - read);
    m_connection.setReading(LineConnection::Reading::Lines);
    finishExchange(*m_begun);
}

// The reply is a copy: the one that is kept here goes before it is told.
void PopDialogue::finishExchange(PopReply reply) // NOLINT(performance-unnecessary-value-param)
{
    const Answered answered = std::move(m_exchanges.front().answered);
    m_exchanges.pop_front();
    m_begun.reset();
    awaitNext();
    answered(reply);
}

void PopDialogue::connectionClosed()
{
    const QString host = m_connection.host();
    end(m_exchanges.empty()
            ? tr("\"%1\" has ended the connection.").arg(host)
            : tr("\"%1\" ended the connection while %2 was awaited.").arg(host, m_exchanges.front().awaited),
        false);
}

void PopDialogue::end(const QString &problem, bool byServer)
{
    abort();
    Q_EMIT ended(problem, byServer);
}

} // namespace vandrel
