#include "platform/ftp/FtpLink.h"

#include <utility>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr int serviceEnds = 421;

FtpProblem problemOf(LineConnection::Failure failure)
{
    switch (failure) {
    case LineConnection::Failure::Lookup:
        return FtpProblem::UnknownHost;
    case LineConnection::Failure::Refused:
        return FtpProblem::Refused;
    case LineConnection::Failure::TimedOut:
        return FtpProblem::TimedOut;
    case LineConnection::Failure::Tls:
        return FtpProblem::Encryption;
    case LineConnection::Failure::Protocol:
        return FtpProblem::Protocol;
    case LineConnection::Failure::Lost:
        break;
    }
    return FtpProblem::Lost;
}

// The command alone: what follows it may be a password.
QString verbOf(const QByteArray &command)
{
    const qsizetype blank = command.indexOf(' ');
    return QString::fromLatin1(blank < 0 ? command : command.left(blank));
}

} // namespace

FtpOutcome ftpFailure(std::int32_t number, const QString &text)
{
    FtpOutcome outcome;
    outcome.number = number;
    outcome.text = text;
    return outcome;
}

FtpOutcome ftpFailure(FtpProblem problem, const QString &text)
{
    return ftpFailure(static_cast<std::int32_t>(problem), text);
}

FtpOutcome ftpUnsendableName()
{
    return ftpFailure(error::BadFileName,
                      FtpLink::tr("The name holds a line break or a NUL, which cannot be sent."));
}

FtpLink::FtpLink(const FtpPatience &patience, QObject *parent)
    : QObject(parent), m_patience(patience), m_connection(this)
{
    LineConnection::Limits limits;
    limits.connecting = patience.connecting;
    m_connection.setLimits(limits);
    connect(&m_connection, &LineConnection::lineReceived, this, &FtpLink::takeLine);
    connect(&m_connection, &LineConnection::connected, this, &FtpLink::awaitReply);
    connect(&m_connection, &LineConnection::encrypted, this, [this] {
        if (const auto onEncrypted = std::exchange(m_onEncrypted, {}))
            onEncrypted();
    });
    connect(&m_connection, &LineConnection::failed, this, &FtpLink::loseConnection);
    connect(&m_connection, &LineConnection::closed, this, [this] {
        lose(ftpFailure(
            FtpProblem::Lost,
            tr("\"%1\" has ended the connection. Connect again to go on.").arg(m_connection.host())));
    });
}

void FtpLink::open(const QString &host, quint16 port, bool implicitTls, OnReply onGreeting)
{
    m_reader = {};
    m_isQuitting = false;
    m_onReply = std::move(onGreeting);
    m_awaited = tr("the greeting");
    m_connection.open(host, port, implicitTls);
}

void FtpLink::startTls(std::function<void()> onEncrypted)
{
    m_onEncrypted = std::move(onEncrypted);
    m_connection.startTls();
}

bool FtpLink::send(const QByteArray &command, OnReply onReply)
{
    if (!m_connection.sendLine(command))
        return false;
    m_onReply = std::move(onReply);
    m_awaited = tr("the reply to %1").arg(verbOf(command));
    awaitReply();
    return true;
}

bool FtpLink::ask(const QByteArray &command, OnReply onFinalReply)
{
    return send(command, [onFinalReply = std::move(onFinalReply)](const FtpReply &reply) {
        if (!reply.isPreliminary())
            onFinalReply(reply);
    });
}

bool FtpLink::sendBetween(const QByteArray &command)
{
    return m_connection.sendLine(command);
}

void FtpLink::redirect(OnReply onReply)
{
    m_onReply = std::move(onReply);
}

void FtpLink::setPatient(bool isPatient)
{
    if (isPatient)
        m_connection.stopAwaiting();
    else if (m_onReply)
        awaitReply();
}

void FtpLink::awaitReply()
{
    m_connection.await(m_awaited, m_patience.reply);
}

void FtpLink::quit()
{
    m_isQuitting = true;
    m_onReply = {};
    m_onEncrypted = {};
    if (m_connection.sendLine("QUIT"))
        m_connection.close();
    else
        m_connection.abort();
}

void FtpLink::drop()
{
    m_onReply = {};
    m_onEncrypted = {};
    m_connection.abort();
}

void FtpLink::takeLine(const QByteArray &line)
{
    if (m_isQuitting)
        return;
    switch (m_reader.addLine(line)) {
    case FtpReplyReader::State::Incomplete:
        return;
    case FtpReplyReader::State::Complete:
        takeReply(m_reader.reply());
        return;
    case FtpReplyReader::State::Broken:
        lose(ftpFailure(
            FtpProblem::Protocol,
            tr("What \"%1\" answers is no FTP. Check the address and the port.").arg(m_connection.host())));
        return;
    }
}

void FtpLink::takeReply(const FtpReply &reply)
{
    if (reply.number == serviceEnds || !m_onReply) {
        // A reply that nobody asked for would be taken for that to the next command.
        lose(ftpFailure(reply.number, reply.text()));
        return;
    }
    if (reply.isPreliminary()) {
        // A copy, because the taker may put another one in its place.
        const OnReply onReply = m_onReply;
        onReply(reply);
        return;
    }
    m_connection.stopAwaiting();
    const OnReply onReply = std::exchange(m_onReply, {});
    onReply(reply);
}

void FtpLink::lose(const FtpOutcome &why)
{
    if (m_isQuitting)
        return;
    drop();
    Q_EMIT lost(why);
}

void FtpLink::loseConnection(LineConnection::Failure failure, const QString &text)
{
    lose(ftpFailure(problemOf(failure), text));
}

} // namespace vandrel
