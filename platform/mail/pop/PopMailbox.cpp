#include "platform/mail/pop/PopMailbox.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "platform/mail/pop/PopListing.h"
#include "platform/mail/pop/PopOpening.h"
#include "platform/mail/pop/PopRetrieval.h"
#include "platform/net/TlsTrust.h"
#include "runtime/EventGate.h"

namespace vandrel {

namespace {

// The code of an error whose text repeats the server's words; POP3 has no numbers of its own.
constexpr std::int32_t refusedByServer = 1;

const std::vector<ServerScheme> &schemes()
{
    static const std::vector<ServerScheme> known{{QStringLiteral("pop3"), 110, false},
                                                 {QStringLiteral("pop3s"), 995, true}};
    return known;
}

template<typename Number>
Number clamped(qint64 value)
{
    return static_cast<Number>(std::min<qint64>(value, std::numeric_limits<Number>::max()));
}

// Lets go of an object that may be in the middle of one of its signals.
template<typename Object>
void letGo(std::unique_ptr<Object> &object)
{
    if (!object)
        return;
    object->disconnect();
    object.release()->deleteLater();
}

} // namespace

PopMailbox::PopMailbox(const PopLimits &limits, QObject *parent) : POPMail(parent), m_limits(limits)
{
    loadTls();
    m_endingTransfer.setSingleShot(true);
    m_endingTransfer.setInterval(limits.endingTransfer);
    connect(&m_endingTransfer, &QTimer::timeout, this, [this] {
        raiseStatus(tr("Disconnected."));
        endSession({}, false);
    });
}

PopMailbox::~PopMailbox() = default;

PopMailbox::Session::Session() = default;

// --- Properties and triggers ------------------------------------------------------------------------------------

void PopMailbox::setPOPServer(const QString &server)
{
    m_server = server;
}

void PopMailbox::setPOPUser(const QString &user)
{
    m_user = user;
}

void PopMailbox::setPOPPassword(const QString &password)
{
    m_password = password;
}

void PopMailbox::setMailNumber(std::int16_t number)
{
    m_mailNumber = number;
}

std::int16_t PopMailbox::MailNumber() const
{
    return m_mailNumber;
}

std::int16_t PopMailbox::MailCount() const
{
    return m_mailCount;
}

void PopMailbox::setConnectNow(bool start)
{
    if (start)
        request({Kind::Connect, 0, m_server, m_user, m_password});
}

void PopMailbox::setDisconnectNow(bool start)
{
    if (start)
        hurryToDisconnect();
}

void PopMailbox::setRetrieveNow(bool start)
{
    if (start)
        request({Kind::Retrieve, m_mailNumber, {}, {}, {}});
}

void PopMailbox::setListNow(bool start)
{
    if (start)
        request({Kind::List, 0, {}, {}, {}});
}

void PopMailbox::setDeleteNow(bool start)
{
    if (start)
        request({Kind::Delete, m_mailNumber, {}, {}, {}});
}

// --- The queue --------------------------------------------------------------------------------------------------

void PopMailbox::request(Operation operation)
{
    m_queue.push_back(std::move(operation));
    startNext();
}

void PopMailbox::startNext()
{
    if (m_running || m_queue.empty())
        return;
    const Operation next = std::move(m_queue.front());
    m_queue.pop_front();
    m_running = next.kind;
    run(next);
}

void PopMailbox::run(const Operation &operation)
{
    const bool needsSession = operation.kind != Kind::Connect && operation.kind != Kind::Disconnect;
    if (needsSession && !m_session) {
        refuseOperation(tr("There is no connection to a mailbox; connect first."));
        return;
    }
    switch (operation.kind) {
    case Kind::Connect:
        connectMailbox(operation);
        break;
    case Kind::Disconnect:
        quit();
        break;
    case Kind::Retrieve:
        retrieve(operation.number);
        break;
    case Kind::List:
        list();
        break;
    case Kind::Delete:
        remove(operation.number);
        break;
    }
}

// The next one starts from the event loop, so that a long queue of refused ones does not pile up on the stack.
void PopMailbox::finishOperation()
{
    letGo(m_opening);
    letGo(m_retrieval);
    letGo(m_listing);
    m_endingTransfer.stop();
    m_running.reset();
    QMetaObject::invokeMethod(this, &PopMailbox::startNext, Qt::QueuedConnection);
}

bool PopMailbox::hasQueued(Kind kind) const
{
    return std::any_of(m_queue.begin(), m_queue.end(),
                       [kind](const Operation &operation) { return operation.kind == kind; });
}

// --- Connecting -------------------------------------------------------------------------------------------------

void PopMailbox::connectMailbox(const Operation &operation)
{
    if (m_session) {
        refuseOperation(
            tr("There is a connection to \"%1\" already; disconnect first.").arg(m_session->host));
        return;
    }
    raiseBusy(true);
    const ServerAddress server = ServerAddress::parse(operation.server, schemes());
    const QString user = operation.user.isEmpty() ? server.user : operation.user;
    const QString password = operation.password.isEmpty() ? server.password : operation.password;
    const QString problem = server.isUsable() ? loginProblem(user, password) : server.problem;
    if (!problem.isEmpty()) {
        endSession(problem, false);
        return;
    }
    makeSession(server.host);
    m_opening = std::make_unique<PopOpening>(*m_session->dialogue,
                                             PopAccount{server, user.toUtf8(), password.toUtf8()});
    connect(m_opening.get(), &PopOpening::status, this, &PopMailbox::raiseStatus);
    connect(m_opening.get(), &PopOpening::opened, this, &PopMailbox::opened);
    connect(m_opening.get(), &PopOpening::refused, this, &PopMailbox::endSession);
    raiseStatus(tr("Looking for %1...").arg(server.host));
    m_opening->start();
}

void PopMailbox::makeSession(const QString &host)
{
    m_session.emplace();
    m_session->host = host;
    m_session->dialogue = std::make_unique<PopDialogue>(m_limits.connection);
    PopDialogue *dialogue = m_session->dialogue.get();
    connect(dialogue, &PopDialogue::progress, this, &PopMailbox::raiseStatus);
    connect(dialogue, &PopDialogue::ended, this, &PopMailbox::dialogueEnded);
}

void PopMailbox::opened(qint64 count, qint64 octets)
{
    m_session->loggedIn = true;
    m_session->count = count;
    m_session->offered = m_opening->offered();
    const auto reachable = clamped<std::int16_t>(count);
    if (reachable < count)
        raiseStatus(tr("The mailbox holds %1 messages, of which the first %2 can be reached.")
                        .arg(count)
                        .arg(reachable));
    else
        raiseStatus(
            tr("Logged in to %1; the mailbox holds %n message(s).", nullptr, reachable).arg(m_session->host));
    reportMailbox(count, octets);
    finishOperation();
}

void PopMailbox::reportMailbox(qint64 count, qint64 octets)
{
    const auto shownCount = clamped<std::int16_t>(count);
    const auto shownOctets = clamped<std::int32_t>(octets);
    raise([this, shownCount] {
        m_mailCount = shownCount;
        Q_EMIT LoggedIn(true);
    });
    raise([this, shownCount, shownOctets] { Q_EMIT MailboxStat(shownCount, shownOctets); });
    raiseBusy(false);
    if (count > 0)
        raise([this] { Q_EMIT HasMail(true); });
    else
        raise([this] { Q_EMIT NoMail(0); });
}

// --- Messages ---------------------------------------------------------------------------------------------------

QString PopMailbox::numberProblem(std::int16_t number) const
{
    if (number < 1 || number > m_session->count)
        return tr("There is no message %1: the mailbox holds messages 1 to %2.")
            .arg(number)
            .arg(m_session->count);
    if (m_session->deleted.contains(number))
        return tr("Message %1 is marked as deleted.").arg(number);
    return {};
}

void PopMailbox::retrieve(std::int16_t number)
{
    const QString problem = numberProblem(number);
    if (!problem.isEmpty()) {
        refuseOperation(problem);
        return;
    }
    raiseBusy(true);
    m_retrieval = std::make_unique<PopRetrieval>(*m_session->dialogue, number, m_limits);
    connect(m_retrieval.get(), &PopRetrieval::status, this, &PopMailbox::raiseStatus);
    connect(m_retrieval.get(), &PopRetrieval::refused, this, &PopMailbox::failOperation);
    connect(m_retrieval.get(), &PopRetrieval::tooLarge, this,
            [this](const QString &text) { endSession(text, false); });
    connect(m_retrieval.get(), &PopRetrieval::cancelled, this, [this] {
        raise([this] { Q_EMIT MailDownloaded(false); });
        raiseBusy(false);
        finishOperation();
    });
    connect(m_retrieval.get(), &PopRetrieval::retrieved, this, [this](const QString &text) {
        raise([this, text] { Q_EMIT MailText(text); });
        raise([this] { Q_EMIT MailDownloaded(true); });
        raiseBusy(false);
        finishOperation();
    });
    m_retrieval->start();
}

void PopMailbox::list()
{
    raiseBusy(true);
    raiseStatus(tr("Listing the mailbox..."));
    m_listing = std::make_unique<PopListing>(*m_session->dialogue, m_session->offered, m_limits);
    connect(m_listing.get(), &PopListing::status, this, &PopMailbox::raiseStatus);
    connect(m_listing.get(), &PopListing::refused, this,
            [this](const QString &text) { failOperation(text, true); });
    connect(m_listing.get(), &PopListing::cancelled, this, [this] {
        raiseBusy(false);
        finishOperation();
    });
    connect(m_listing.get(), &PopListing::listed, this, [this](const QString &listing) {
        raiseStatus(tr("The mailbox was listed."));
        raise([this, listing] { Q_EMIT MailList(listing); });
        raiseBusy(false);
        finishOperation();
    });
    m_listing->start();
}

void PopMailbox::remove(std::int16_t number)
{
    const QString problem = numberProblem(number);
    if (!problem.isEmpty()) {
        refuseOperation(problem);
        return;
    }
    raiseBusy(true);
    m_session->dialogue->ask("DELE " + QByteArray::number(number), tr("the answer to DELE"),
                             [this, number](const PopReply &reply) { removeAnswered(number, reply); });
}

void PopMailbox::removeAnswered(std::int16_t number, const PopReply &reply)
{
    if (!reply.isOk()) {
        failOperation(tr("The server does not delete message %1: %2").arg(number).arg(reply.text()), true);
        return;
    }
    m_session->deleted.insert(number);
    raiseStatus(tr("Message %1 is marked as deleted; deletions become final at \"Disconnect\".").arg(number));
    raise([this, number] { Q_EMIT MailDeleted(number); });
    raiseBusy(false);
    finishOperation();
}

// --- Disconnecting ----------------------------------------------------------------------------------------------

// Deletions that were asked for are carried out before the session ends; transfers are given up.
void PopMailbox::hurryToDisconnect()
{
    if (m_running == Kind::Connect) {
        raiseStatus(tr("The connection was given up."));
        endSession({}, false);
        return;
    }
    // The session is being ended already, and waiting is all that can be done.
    if (m_running == Kind::Disconnect || hasQueued(Kind::Disconnect))
        return;
    std::erase_if(m_queue, [](const Operation &operation) {
        return operation.kind == Kind::Retrieve || operation.kind == Kind::List;
    });
    m_queue.push_back({Kind::Disconnect, 0, {}, {}, {}});
    cancelTransfer();
    startNext();
}

void PopMailbox::cancelTransfer()
{
    if (!m_retrieval && !m_listing)
        return;
    const bool deletions = !m_session->deleted.isEmpty() || hasQueued(Kind::Delete);
    raiseStatus(deletions ? tr("Waiting for the end of the transfer, so that deletions can become final...")
                          : tr("Ending the transfer..."));
    if (!deletions)
        m_endingTransfer.start();
    if (m_retrieval)
        m_retrieval->cancel();
    else
        m_listing->cancel();
}

void PopMailbox::quit()
{
    if (!m_session) {
        raiseStatus(tr("Not connected."));
        endSession({}, false);
        return;
    }
    raiseStatus(tr("Ending the session..."));
    m_session->dialogue->ask("QUIT", tr("the answer to QUIT"),
                             [this](const PopReply &reply) { quitAnswered(reply); });
}

void PopMailbox::quitAnswered(const PopReply &reply)
{
    const auto deleted = static_cast<int>(m_session->deleted.size());
    if (!reply.isOk()) {
        quitUnanswered(tr("The server did not end the session in good order: %1").arg(reply.text()), true);
        return;
    }
    raiseStatus(deleted == 0
                    ? tr("Disconnected.")
                    : tr("Disconnected; %n deleted message(s) are gone for good.", nullptr, deleted));
    endSession({}, false);
}

void PopMailbox::quitUnanswered(const QString &problem, bool byServer)
{
    const auto deleted = static_cast<int>(m_session->deleted.size());
    if (deleted == 0) {
        raiseStatus(tr("Disconnected."));
        endSession({}, false);
        return;
    }
    m_session->deleted.clear();
    endSession(tr("%1 Whether the %n message(s) marked as deleted are gone is not known.", nullptr, deleted)
                   .arg(problem),
               byServer);
}

// --- Ends -------------------------------------------------------------------------------------------------------

// An operation that could not even begin.
void PopMailbox::refuseOperation(const QString &text)
{
    raiseError(text, false);
    finishOperation();
}

// An operation that failed in a session that goes on.
void PopMailbox::failOperation(const QString &text, bool byServer)
{
    raiseStatus(text);
    raiseError(text, byServer);
    if (m_running == Kind::Retrieve)
        raise([this] { Q_EMIT MailDownloaded(false); });
    raiseBusy(false);
    finishOperation();
}

void PopMailbox::dialogueEnded(const QString &problem, bool byServer)
{
    if (m_running == Kind::Disconnect)
        quitUnanswered(problem, byServer);
    else
        endSession(problem, byServer);
}

// Ends the session, or the attempt at one. `problem` is empty where nothing went wrong.
void PopMailbox::endSession(const QString &problem, bool byServer)
{
    QString text = problem;
    if (m_session && !m_session->deleted.isEmpty() && !problem.isEmpty())
        text += tr(" No message was deleted.");
    dropSession();
    if (m_running != Kind::Disconnect)
        dropQueuedForSession();
    if (m_running == Kind::Connect)
        raise([this] { Q_EMIT LoggedIn(false); });
    else if (m_running == Kind::Retrieve)
        raise([this] { Q_EMIT MailDownloaded(false); });
    if (m_running && m_running != Kind::Disconnect)
        raiseBusy(false);
    if (!text.isEmpty()) {
        raiseStatus(text);
        raiseError(text, byServer);
    }
    raise([this] {
        m_mailCount = 0;
        Q_EMIT Disconnected(true);
    });
    finishOperation();
}

void PopMailbox::dropSession()
{
    if (!m_session)
        return;
    m_session->dialogue->abort();
    letGo(m_session->dialogue);
    m_session.reset();
}

// What was asked of the session that has ended would be refused one by one; the one error says it all.
void PopMailbox::dropQueuedForSession()
{
    while (!m_queue.empty() && m_queue.front().kind != Kind::Connect)
        m_queue.pop_front();
}

// --- Events -----------------------------------------------------------------------------------------------------

void PopMailbox::raise(std::function<void()> event)
{
    EventGate::raise(this, std::move(event));
}

void PopMailbox::raiseStatus(const QString &text)
{
    // Each text replaces the one before, so each says it.
    const bool open = m_session && m_session->loggedIn && !m_session->dialogue->isEncrypted();
    const QString shown = open ? tr("%1 (The connection is not encrypted.)").arg(text) : text;
    raise([this, shown] { Q_EMIT StatusText(shown); });
}

void PopMailbox::raiseError(const QString &text, bool byServer)
{
    const std::int32_t code = byServer ? refusedByServer : 0;
    raise([this, code, text] { Q_EMIT Error(true, code, text); });
}

void PopMailbox::raiseBusy(bool busy)
{
    raise([this, busy] { Q_EMIT Busy(busy); });
}

} // namespace vandrel
