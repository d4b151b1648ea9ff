#include "platform/ftp/FtpTransfer.h"

#include <algorithm>
#include <utility>

#include "platform/filesystem/NativeFile.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr qint64 progressInterval = 100;
// What is read, perhaps encrypted and sent in one go: small enough to stay in the processor's cache.
constexpr qint64 readSize = 64 * 1024;
// After so long the event loop is looked at again, however fast the server takes what is sent.
constexpr qint64 longestTurn = 8;
// Of names, with what each entry takes beside them: more than any list can show.
constexpr qsizetype longestListing = 64 * 1024 * 1024;
constexpr qsizetype entrySize = 128;

FtpOutcome outcomeOf(const RuntimeError &failure)
{
    return ftpFailure(failure.number(), failure.text());
}

} // namespace

FtpTransfer::FtpTransfer(FtpLink &link, FtpDataRules &rules, QObject *parent)
    : QObject(parent), m_link(link), m_data(link, rules, this)
{
    connect(&m_data, &FtpData::ready, this, &FtpTransfer::sendCommand);
    connect(&m_data, &FtpData::opened, this, [this] {
        m_isDataOpen = true;
        openIfAccepted();
    });
    connect(&m_data, &FtpData::received, this, &FtpTransfer::takeData);
    connect(&m_data, &FtpData::failed, this, &FtpTransfer::dataFailed);
    connect(&m_data, &FtpData::ended, this, [this](bool isWhole) {
        m_hasData = true;
        m_isWhole = isWhole;
        m_link.setPatient(false);
        completeIfBoth();
    });
}

void FtpTransfer::start()
{
    try {
        prepare();
    } catch (const RuntimeError &failure) {
        fail(outcomeOf(failure));
        return;
    }
    chooseType();
}

void FtpTransfer::cancel()
{
    m_isOver = true;
    m_data.drop();
}

void FtpTransfer::chooseType()
{
    (void)m_link.ask(isAscii() ? "TYPE A" : "TYPE I", [this](const FtpReply &reply) {
        if (reply.isCompletion())
            askSize();
        else
            fail(ftpFailure(reply.number, reply.text()));
    });
}

void FtpTransfer::askSize()
{
    const QByteArray name = sizedName();
    if (name.isEmpty()) {
        m_data.prepare();
        return;
    }
    const bool isSent = m_link.ask("SIZE " + name, [this](const FtpReply &reply) {
        if (reply.isCompletion())
            m_total = sizeTold(reply).value_or(-1);
        m_data.prepare();
    });
    if (!isSent)
        fail(ftpUnsendableName());
}

void FtpTransfer::sendCommand()
{
    m_isCommandSent = m_link.send(command(), [this](const FtpReply &reply) { takeReply(reply); });
    if (m_isCommandSent)
        m_data.begin();
    else
        fail(ftpUnsendableName());
}

void FtpTransfer::takeReply(const FtpReply &reply)
{
    if (m_isOver)
        return;
    if (reply.isPreliminary()) {
        if (!m_hasData && !m_dataFailure)
            m_link.setPatient(true);
        m_isAccepted = true;
        openIfAccepted();
        return;
    }
    if (reply.isCompletion() && m_dataFailure) {
        fail(*m_dataFailure);
    } else if (reply.isCompletion()) {
        m_hasReply = true;
        completeIfBoth();
    } else if (tryAnother(reply)) {
        beginAgain();
    } else {
        fail(ftpFailure(reply.number, reply.text()));
    }
}

void FtpTransfer::beginAgain()
{
    m_data.drop();
    m_dataFailure.reset();
    m_transferred = 0;
    m_isCommandSent = m_isAccepted = m_isDataOpen = m_isOpened = m_hasData = false;
    m_isWhole = true;
    m_data.prepare();
}

// Nothing is sent to a server that may still refuse it.
void FtpTransfer::openIfAccepted()
{
    if (m_isDataOpen && m_isAccepted && !m_isOver && !std::exchange(m_isOpened, true))
        opened();
}

void FtpTransfer::takeData(QByteArrayView octets)
{
    if (m_isOver)
        return;
    try {
        take(octets);
        count(octets.size());
    } catch (const RuntimeError &failure) {
        interrupt(outcomeOf(failure));
    } catch (const FtpOutcome &why) {
        interrupt(why);
    }
}

void FtpTransfer::count(qint64 octets)
{
    m_transferred += octets;
    if (m_sinceProgress.isValid() && m_sinceProgress.elapsed() < progressInterval)
        return;
    m_sinceProgress.start();
    Q_EMIT progress(m_transferred, m_total);
}

// The server says in its reply what it knows of the failure, which is more than is known here.
void FtpTransfer::dataFailed(const FtpOutcome &why)
{
    if (m_isOver)
        return;
    if (!m_isCommandSent || m_hasReply) {
        fail(why);
        return;
    }
    m_dataFailure = std::make_unique<FtpOutcome>(why);
    m_data.drop();
    m_link.awaitReply();
}

void FtpTransfer::completeIfBoth()
{
    if (!m_hasReply || !m_hasData || m_isOver)
        return;
    m_isOver = true;
    try {
        const QString text = complete(m_isWhole);
        Q_EMIT done(text);
    } catch (const RuntimeError &failure) {
        Q_EMIT failed(outcomeOf(failure));
    } catch (const FtpOutcome &why) {
        Q_EMIT failed(why);
    }
}

void FtpTransfer::fail(const FtpOutcome &why)
{
    if (std::exchange(m_isOver, true))
        return;
    m_data.drop();
    Q_EMIT failed(why);
}

void FtpTransfer::interrupt(const FtpOutcome &why)
{
    if (std::exchange(m_isOver, true))
        return;
    m_data.drop();
    Q_EMIT interrupted(why);
}

// --- Download ---------------------------------------------------------------------------------------------------

FtpDownload::FtpDownload(
    FtpLink &link, FtpDataRules &rules, const FtpRequest &request, QByteArray name, QObject *parent)
    : FtpTransfer(link, rules, parent), m_name(std::move(name)), m_isAscii(request.isAscii),
      m_file(request.localPath, request.localName)
{ }

void FtpDownload::prepare()
{
    m_file.begin();
}

void FtpDownload::write(QByteArrayView octets)
{
    m_file.write(octets.data(), octets.size());
    // Raises the reason, with the old file untouched.
    if (!m_file.isSound())
        m_file.commit();
}

void FtpDownload::take(QByteArrayView octets)
{
    if (m_isAscii)
        write(m_lineEnds.convert(octets));
    else
        write(octets);
}

QString FtpDownload::complete(bool isWhole)
{
    if (total() >= 0 && transferred() != total())
        throw ftpFailure(
            FtpProblem::Incomplete,
            tr("%1 of %2 octets have come. The local file is as it was; download the file again.")
                .arg(transferred())
                .arg(total()));
    if (!isWhole && total() < 0)
        throw ftpFailure(
            FtpProblem::Incomplete,
            tr("The encrypted connection was cut off, so that the end may be missing. The local file is "
               "as it was; download the file again."));
    write(m_lineEnds.rest());
    m_file.commit();
    return {};
}

// --- Upload -----------------------------------------------------------------------------------------------------

FtpUpload::FtpUpload(FtpLink &link, FtpDataRules &rules, FtpRequest request, QByteArray name, QObject *parent)
    : FtpTransfer(link, rules, parent), m_request(std::move(request)), m_name(std::move(name))
{
    m_nextTurn.setSingleShot(true);
    connect(&m_nextTurn, &QTimer::timeout, this, &FtpUpload::sendTurn);
    connect(&data(), &FtpData::sent, this, [this] {
        if (!m_nextTurn.isActive())
            sendTurn();
    });
}

void FtpUpload::prepare()
{
    m_file = openForReading(m_request.localPath, m_request.localName);
    setTotal(m_file->size());
}

void FtpUpload::opened()
{
    sendTurn();
}

void FtpUpload::sendTurn()
{
    QElapsedTimer turn;
    turn.start();
    while (sendNext()) {
        if (turn.elapsed() < longestTurn)
            continue;
        m_nextTurn.start(0);
        return;
    }
}

// False when there is no more, or no room for it.
bool FtpUpload::sendNext()
{
    if (isOver() || m_isSent || (m_unsent == m_pending.size() && !readMore()))
        return false;
    m_unsent += data().write(m_pending, m_unsent);
    return m_unsent == m_pending.size();
}

// The next piece of the file; false at its end, and when it cannot be read. One buffer serves them all.
bool FtpUpload::readMore()
{
    m_pending.resize(readSize);
    const qint64 got = m_file->read(m_pending.data(), m_pending.size());
    m_pending.resize(std::max<qint64>(0, got));
    m_unsent = 0;
    if (got < 0) {
        interrupt(
            ftpFailure(error::DeviceIoError,
                       tr("\"%1\" could not be read: %2.").arg(m_request.localName, m_file->errorString())));
    } else if (got == 0) {
        m_isSent = true;
        data().finish();
    } else {
        count(got);
        if (m_request.isAscii)
            m_pending = m_lineEnds.convert(m_pending);
    }
    return got > 0;
}

// Nothing is expected; what comes is not for us.
void FtpUpload::take(QByteArrayView) { }

QString FtpUpload::complete(bool)
{
    if (!m_isSent)
        throw ftpFailure(
            FtpProblem::Incomplete,
            tr("The server has ended the transfer before \"%1\" was sent to its end. Upload it again.")
                .arg(m_request.localName));
    return {};
}

// --- Listing ----------------------------------------------------------------------------------------------------

FtpListing::FtpListing(FtpLink &link, FtpDataRules &rules, bool offersMachineForm, QObject *parent)
    : FtpTransfer(link, rules, parent)
{
    begin(offersMachineForm ? ListingParser::Format::Machine : ListingParser::Format::Long);
}

void FtpListing::begin(ListingParser::Format format)
{
    m_format = format;
    m_lines = {};
    m_size = 0;
    m_parser = std::make_unique<ListingParser>(format, QDate::currentDate());
}

QByteArray FtpListing::command() const
{
    switch (m_format) {
    case ListingParser::Format::Machine:
        return "MLSD";
    case ListingParser::Format::Long:
        return "LIST";
    case ListingParser::Format::Names:
        break;
    }
    return "NLST";
}

void FtpListing::take(QByteArrayView octets)
{
    append(m_parser->add(octets));
}

void FtpListing::append(const std::vector<ListingEntry> &entries)
{
    for (const ListingEntry &entry : entries) {
        m_size += entrySize + entry.name.size() + entry.target.size();
        m_lines.add(entry);
    }
    if (m_size > longestListing)
        throw ftpFailure(FtpProblem::TooLarge, tr("The listing is too large to be shown."));
}

QString FtpListing::complete(bool)
{
    append(m_parser->finish());
    return m_lines.inOrder();
}

// A server may lack a command that others have; that is no failure.
bool FtpListing::tryAnother(const FtpReply &reply)
{
    constexpr int unknownCommand = 500;
    constexpr int notImplemented = 502;
    constexpr int notForThat = 504;
    const bool isUnknown
        = reply.number == unknownCommand || reply.number == notImplemented || reply.number == notForThat;
    if (!isUnknown || m_format == ListingParser::Format::Names)
        return false;
    begin(m_format == ListingParser::Format::Machine ? ListingParser::Format::Long
                                                     : ListingParser::Format::Names);
    return true;
}

} // namespace vandrel
