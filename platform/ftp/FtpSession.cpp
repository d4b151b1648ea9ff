#include "platform/ftp/FtpSession.h"

#include <utility>

#include "platform/ftp/FtpLogin.h"
#include "platform/ftp/FtpTransfer.h"
#include "platform/ftp/RemoteNames.h"
#include "platform/net/ServerLine.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

using Kind = FtpRequest::Kind;

constexpr int directoryReply = 257;
constexpr int newNameWanted = 350;
// So many signs of life keep a session for half an hour after its last use.
constexpr int mostKeptAlive = 30;
// A connection that was told goodbye ends itself within this time.
constexpr int retirement = 10'000;

FtpOutcome badName(const QString &text)
{
    return ftpFailure(error::BadFileName, text);
}

bool needsName(Kind kind)
{
    return kind != Kind::List && kind != Kind::ReportDirectory && kind != Kind::ChangeDirectory
        && kind != Kind::Connect;
}

} // namespace

FtpSession::FtpSession(const FtpPatience &patience)
    : m_patience(patience), m_restLimit(this), m_keepAlive(this)
{
    m_restLimit.setSingleShot(true);
    m_restLimit.setInterval(m_patience.rest);
    connect(&m_restLimit, &QTimer::timeout, this, [this] {
        linkLost(ftpFailure(FtpProblem::TimedOut,
                            tr("The server did not end what it was doing. Connect again to go on.")));
    });
    m_keepAlive.setInterval(m_patience.idle);
    connect(&m_keepAlive, &QTimer::timeout, this, &FtpSession::keepAlive);
}

FtpSession::~FtpSession() = default;

void FtpSession::request(const FtpRequest &request)
{
    m_queue.push_back(request);
    runNext();
}

void FtpSession::runNext()
{
    if (m_current || m_afterRest || m_isKeepingAlive || m_queue.empty())
        return;
    m_current = std::move(m_queue.front());
    m_queue.pop_front();
    m_keptAlive = 0;
    run(*m_current);
}

void FtpSession::run(const FtpRequest &request)
{
    if (request.problem != 0) {
        fail(ftpFailure(request.problem, request.problemText));
    } else if (request.kind == Kind::Connect) {
        connectTo(request);
    } else if (!m_isConnected) {
        fail(ftpFailure(FtpProblem::NotConnected, tr("There is no connection to a server. Connect first.")));
    } else if (needsName(request.kind) && request.name.isEmpty()) {
        fail(badName(tr("There is no remote name. Type or pick one first.")));
    } else {
        transfer(request);
    }
}

void FtpSession::connectTo(const FtpRequest &request)
{
    disconnectFromServer();
    m_link = std::make_unique<FtpLink>(m_patience);
    connect(m_link.get(), &FtpLink::lost, this, &FtpSession::linkLost);
    auto *login = new FtpLogin(*m_link, request, this);
    m_operation = login;
    connect(login, &FtpLogin::failed, this, [this](const FtpOutcome &why) {
        fail(why);
        disconnectFromServer();
    });
    connect(login, &FtpLogin::done, this, [this, login] {
        m_isConnected = true;
        m_features = login->features();
        m_dataRules = {};
        m_dataRules.isProtected = login->protectsData();
        m_keepAlive.start();
        if (login->path().size() > 1) {
            FtpRequest change;
            change.kind = Kind::ChangeDirectory;
            change.name = login->path();
            m_queue.push_front(change);
        }
        succeed();
    });
    login->start();
}

void FtpSession::transfer(const FtpRequest &request)
{
    const std::optional<QByteArray> name = sentRemoteName(request.name);
    const std::optional<QByteArray> newName = sentRemoteName(request.newName);
    if (!name || !newName) {
        fail(badName(tr("The name holds half a character, which cannot be sent.")));
        return;
    }
    switch (request.kind) {
    case Kind::Connect:
        break;
    case Kind::Upload:
        runTransfer(new FtpUpload(*m_link, m_dataRules, request, *name, this));
        break;
    case Kind::Download:
        runTransfer(new FtpDownload(*m_link, m_dataRules, request, *name, this));
        break;
    case Kind::List:
        runTransfer(new FtpListing(*m_link, m_dataRules, m_features.contains("MLST"), this));
        break;
    case Kind::ReportDirectory:
        reportDirectory();
        break;
    case Kind::ChangeDirectory:
        changeDirectory(request);
        break;
    case Kind::RemoveDirectory:
        command("RMD " + *name, [this](const FtpReply &) { succeed(); });
        break;
    case Kind::CreateDirectory:
        command("MKD " + *name, [this](const FtpReply &) { succeed(); });
        break;
    case Kind::Delete:
        command("DELE " + *name, [this](const FtpReply &) { succeed(); });
        break;
    case Kind::Rename:
        rename(*name, *newName);
        break;
    }
}

void FtpSession::command(const QByteArray &command, const std::function<void(const FtpReply &)> &onCompletion)
{
    const bool isSent = m_link->ask(command, [this, onCompletion](const FtpReply &reply) {
        if (reply.isCompletion() || reply.number == newNameWanted)
            onCompletion(reply);
        else
            fail(ftpFailure(reply.number, reply.text()));
    });
    if (!isSent)
        fail(ftpUnsendableName());
}

void FtpSession::rename(const QByteArray &from, const QByteArray &to)
{
    // Found out before the server is told the first half.
    if (to.isEmpty() || breaksTheLine(to)) {
        fail(badName(tr("The new name is empty or holds a line break or a NUL. Type another one.")));
        return;
    }
    command("RNFR " + from,
            [this, to](const FtpReply &) { command("RNTO " + to, [this](const FtpReply &) { succeed(); }); });
}

void FtpSession::reportDirectory()
{
    command("PWD", [this](const FtpReply &reply) {
        const auto directory = quotedDirectory(reply);
        if (directory)
            succeed(shownRemotePath(*directory));
        else
            fail(ftpFailure(FtpProblem::Protocol, tr("The server named no directory: %1").arg(reply.text())));
    });
}

void FtpSession::changeDirectory(const FtpRequest &request)
{
    // No path leaves the directory as it is.
    if (request.name.isEmpty())
        reportDirectory();
    else
        command("CWD " + sentRemoteName(request.name).value_or(QByteArray()),
                [this](const FtpReply &) { reportDirectory(); });
}

void FtpSession::runTransfer(FtpTransfer *transfer)
{
    m_operation = transfer;
    m_isTransferring = true;
    connect(transfer, &FtpTransfer::done, this, &FtpSession::succeed);
    connect(transfer, &FtpTransfer::failed, this, &FtpSession::fail);
    connect(transfer, &FtpTransfer::progress, this, &FtpSession::progress);
    connect(transfer, &FtpTransfer::interrupted, this,
            [this](const FtpOutcome &why) { resynchronise([this, why] { fail(why); }); });
    transfer->start();
}

void FtpSession::succeed(const QString &text)
{
    FtpOutcome outcome;
    outcome.isDone = true;
    outcome.text = text;
    finish(outcome);
}

void FtpSession::fail(const FtpOutcome &why)
{
    finish(why);
}

void FtpSession::finish(FtpOutcome outcome)
{
    if (!m_current)
        return;
    outcome.kind = m_current->kind;
    m_current.reset();
    endOperation();
    Q_EMIT finished(outcome);
    QMetaObject::invokeMethod(this, &FtpSession::runNext, Qt::QueuedConnection);
}

// The operation may be the one that is being heard right now.
void FtpSession::endOperation()
{
    if (std::exchange(m_isTransferring, false))
        Q_EMIT progress(0, 0);
    if (QObject *operation = std::exchange(m_operation, nullptr)) {
        operation->disconnect(this);
        if (auto *transfer = qobject_cast<FtpTransfer *>(operation))
            transfer->cancel();
        operation->deleteLater();
    }
}

void FtpSession::linkLost(const FtpOutcome &why)
{
    m_queue.clear();
    m_restLimit.stop();
    m_afterRest = {};
    if (m_link)
        m_link->drop();
    m_isConnected = false;
    m_isKeepingAlive = false;
    m_keepAlive.stop();
    if (m_current) {
        finish(why);
        return;
    }
    FtpOutcome outcome = why;
    outcome.kind = Kind::Connect;
    Q_EMIT finished(outcome);
}

void FtpSession::disconnectFromServer()
{
    m_isConnected = false;
    m_isKeepingAlive = false;
    m_keepAlive.stop();
    m_restLimit.stop();
    m_afterRest = {};
    if (!m_link)
        return;
    FtpLink *retired = m_link.release();
    retired->disconnect(this);
    retired->setParent(this);
    retired->quit();
    QTimer::singleShot(retirement, retired, &QObject::deleteLater);
}

void FtpSession::close()
{
    m_queue.clear();
    m_current.reset();
    endOperation();
    disconnectFromServer();
}

void FtpSession::abort()
{
    m_queue.clear();
    if (!m_current || m_afterRest)
        return;
    const bool wasConnecting = m_current->kind == Kind::Connect;
    if (wasConnecting) {
        m_current.reset();
        endOperation();
        m_link->drop();
        disconnectFromServer();
        return;
    }
    resynchronise([this] {
        m_current.reset();
        QMetaObject::invokeMethod(this, &FtpSession::runNext, Qt::QueuedConnection);
    });
}

// Brings the server to rest in the middle of a command. How many replies an ended transfer has differs between
// servers, so a question with a reply of its own kind marks where they end (RFC 959: ABOR).
void FtpSession::resynchronise(std::function<void()> then)
{
    const bool wasTransferring = m_isTransferring;
    endOperation();
    m_afterRest = std::move(then);
    if (!m_link->isWaiting()) {
        resynchronised();
        return;
    }
    m_restLimit.start();
    if (!wasTransferring) {
        m_link->redirect([this](const FtpReply &reply) {
            if (!reply.isPreliminary())
                resynchronised();
        });
        return;
    }
    m_link->redirect([this](const FtpReply &reply) {
        if (reply.isPreliminary())
            return;
        if (m_link->send("PWD", {}))
            awaitDirectory();
    });
    (void)m_link->sendBetween("ABOR");
}

void FtpSession::awaitDirectory()
{
    m_link->redirect([this](const FtpReply &reply) {
        if (reply.number == directoryReply)
            resynchronised();
        else
            awaitDirectory();
    });
}

void FtpSession::resynchronised()
{
    m_restLimit.stop();
    if (const auto then = std::exchange(m_afterRest, {}))
        then();
}

void FtpSession::keepAlive()
{
    const bool isIdle = !m_current && !m_afterRest && !m_isKeepingAlive && m_queue.empty();
    if (!isIdle || m_keptAlive >= mostKeptAlive)
        return;
    ++m_keptAlive;
    m_isKeepingAlive = m_link->ask("NOOP", [this](const FtpReply &) {
        m_isKeepingAlive = false;
        runNext();
    });
}

} // namespace vandrel
