#include "platform/mail/smtp/SmtpDialogue.h"

#include <utility>

#include "runtime/Events.h"

namespace vandrel {

SmtpDialogue::SmtpDialogue(const SmtpTimes &times, QObject *parent) : QObject(parent), m_times(times)
{
    LineConnection::Limits limits;
    limits.connecting = times.connecting;
    limits.idle = times.reply;
    limits.closing = times.farewell;
    m_connection.setLimits(limits);
    onEvent(&m_connection, &LineConnection::progress, this,
            [this](const QString &text) { Q_EMIT progress(text); });
    onEvent(&m_connection, &LineConnection::connected, this, [this] {
        m_connection.await(m_awaited, m_times.reply);
        Q_EMIT connected();
    });
    onEvent(&m_connection, &LineConnection::encrypted, this, [this] { std::exchange(m_encrypted, {})(); });
    onEvent(&m_connection, &LineConnection::lineReceived, this, &SmtpDialogue::take);
    onEvent(&m_connection, &LineConnection::sent, this, [this](qint64 unsent) { Q_EMIT sent(unsent); });
    onEvent(&m_connection, &LineConnection::drained, this, [this] { Q_EMIT drained(); });
    onEvent(&m_connection, &LineConnection::closed, this, [this] {
        end(m_awaited.isEmpty() ? tr("The server \"%1\" ended the connection.").arg(m_connection.host())
                                : tr("The server \"%1\" ended the connection instead of giving %2.")
                                      .arg(m_connection.host(), m_awaited),
            false);
    });
    onEvent(&m_connection, &LineConnection::failed, this,
            [this](LineConnection::Failure failure, const QString &text) {
                end(text, failure == LineConnection::Failure::Lookup);
            });
}

void SmtpDialogue::open(const QString &host, quint16 port, bool implicitTls, Answered greeted)
{
    m_answered = std::move(greeted);
    m_awaited = tr("its greeting");
    m_connection.open(host, port, implicitTls);
}

void SmtpDialogue::ask(const QByteArray &command, const QString &awaited, int milliseconds, Answered answered)
{
    expect(awaited, milliseconds, std::move(answered));
    if (!m_connection.sendLine(command))
        end(tr("The connection to \"%1\" could not be used while waiting for %2.")
                .arg(m_connection.host(), awaited),
            false);
}

bool SmtpDialogue::write(const QByteArray &octets)
{
    return m_connection.write(octets);
}

void SmtpDialogue::awaitProgress(const QString &awaited, int milliseconds)
{
    m_awaited = awaited;
    m_connection.await(awaited, milliseconds);
}

void SmtpDialogue::startTls(std::function<void()> encrypted)
{
    m_encrypted = std::move(encrypted);
    m_connection.startTls();
}

void SmtpDialogue::close()
{
    m_answered = nullptr;
    m_connection.close();
}

void SmtpDialogue::abort()
{
    m_over = true;
    m_answered = nullptr;
    m_connection.abort();
}

void SmtpDialogue::expect(const QString &awaited, int milliseconds, Answered answered)
{
    m_answered = std::move(answered);
    m_awaited = awaited;
    m_connection.await(awaited, milliseconds);
}

void SmtpDialogue::take(const QByteArray &line)
{
    switch (m_reader.take(line)) {
    case SmtpReplyReader::State::More:
        break;
    case SmtpReplyReader::State::Complete:
        takeReply();
        break;
    case SmtpReplyReader::State::Broken:
        end(tr(R"(The server "%1" does not speak SMTP: it sent "%2".)")
                .arg(m_connection.host(), m_censor(QString::fromLatin1(line.left(80)).simplified())),
            false);
    }
}

// The handler runs in a turn of its own: what the server has already sent behind its reply was not asked for,
// and must not be taken for the answer to what the handler asks next. It runs even when the connection has
// gone by then, since the reply says why.
void SmtpDialogue::takeReply()
{
    if (!m_answered) {
        end(tr("The server \"%1\" broke off: %2").arg(m_connection.host(), words(m_reader.reply())), false);
        return;
    }
    m_connection.stopAwaiting();
    m_awaited.clear();
    const auto answer = [answered = std::exchange(m_answered, {}), reply = m_reader.reply()] {
        guarded([&] { answered(reply); });
    };
    QMetaObject::invokeMethod(this, answer, Qt::QueuedConnection);
}

// Told behind the reply that may be under way, and never inside of a caller.
void SmtpDialogue::end(const QString &problem, bool unknownHost)
{
    if (m_over)
        return;
    abort();
    QMetaObject::invokeMethod(
        this, [this, problem, unknownHost] { Q_EMIT ended(problem, unknownHost); }, Qt::QueuedConnection);
}

} // namespace vandrel
