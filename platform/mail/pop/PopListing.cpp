#include "platform/mail/pop/PopListing.h"

#include <algorithm>

#include "platform/mail/text/MailText.h"

namespace vandrel {

namespace {

// No message beyond can be asked for.
constexpr std::size_t mostEntries = 32'767;
constexpr qsizetype largestHeader = 64 * 1024;
// Room for a million messages.
constexpr qint64 largestListing = 16 * 1024 * 1024;
// Some servers send the whole message whatever they are asked for.
constexpr qint64 largestTop = 64 * 1024 * 1024;
// Enough to hide the way to the server and back, and too few to fill anybody's buffers.
constexpr std::size_t pipelined = 64;
constexpr std::size_t statusEvery = 500;
constexpr qsizetype longestField = 80;

QString shortened(const QString &text)
{
    return text.size() <= longestField ? text : text.left(longestField - 3) + QStringLiteral("...");
}

} // namespace

PopListing::PopListing(PopDialogue &dialogue,
                       const PopCapabilities &offered,
                       const PopLimits &limits,
                       QObject *parent)
    : QObject(parent), m_dialogue(dialogue), m_limits(limits), m_asksHeaders(offered.top || !offered.stated),
      m_atOnce(offered.pipelining ? pipelined : 1)
{ }

void PopListing::start()
{
    m_dialogue.askLines(
        "LIST", tr("the listing"), largestListing, [this](const QByteArray &line) { addEntry(line); },
        [this](const PopReply &reply) { listAnswered(reply); });
}

void PopListing::cancel()
{
    m_cancelled = true;
}

void PopListing::addEntry(const QByteArray &line)
{
    const auto numbers = PopNumbers::parse(line);
    if (numbers && m_entries.size() < mostEntries)
        m_entries.push_back({numbers->first, numbers->second, {}, {}});
}

void PopListing::listAnswered(const PopReply &reply)
{
    if (!reply.isOk() && !m_cancelled) {
        Q_EMIT refused(tr("The server does not list the mailbox: %1").arg(reply.text()));
        return;
    }
    m_toAsk = m_asksHeaders ? m_entries.size() : 0;
    if (m_atOnce == 1)
        m_toAsk = std::min(m_toAsk, static_cast<std::size_t>(m_limits.headersOneByOne));
    m_end.setRemainingTime(m_limits.askingForHeaders);
    askMoreHeaders();
}

void PopListing::askMoreHeaders()
{
    if (m_cancelled || m_end.hasExpired())
        m_toAsk = m_asked;
    while (m_asked < m_toAsk && m_asked - m_answered < m_atOnce)
        askHeader(m_asked++);
    if (m_answered == m_asked)
        finish();
}

void PopListing::askHeader(std::size_t index)
{
    m_dialogue.askLines(
        "TOP " + QByteArray::number(m_entries[index].number) + " 0", tr("the head of a message"), largestTop,
        [this](const QByteArray &line) {
            m_inHeader = m_inHeader && !line.isEmpty();
            if (m_inHeader && m_header.size() + line.size() < largestHeader)
                m_header.append(line).append("\r\n");
        },
        [this, index](const PopReply &reply) { headerAnswered(index, reply); });
}

void PopListing::headerAnswered(std::size_t index, const PopReply &reply)
{
    ++m_answered;
    if (reply.isOk()) {
        const MailSummary summary = mailSummary(m_header);
        m_entries[index].from = shortened(summary.from);
        m_entries[index].subject = shortened(summary.subject);
    } else if (index == 0) {
        // A server that does not know the command will not know it the next time either.
        m_toAsk = m_asked;
    }
    m_header.resize(0);
    m_inHeader = true;
    if (m_answered % statusEvery == 0)
        Q_EMIT status(tr("Listed %1 of %2 messages.").arg(m_answered).arg(m_entries.size()));
    askMoreHeaders();
}

void PopListing::finish()
{
    if (m_cancelled) {
        Q_EMIT cancelled();
        return;
    }
    QString listing;
    for (const Entry &entry : m_entries) {
        listing += tr("%1.  %2 octets").arg(entry.number).arg(entry.octets);
        for (const QString &field : {entry.from, entry.subject}) {
            if (!field.isEmpty())
                listing += QStringLiteral("   ") + field;
        }
        listing += QStringLiteral("\r\n");
    }
    Q_EMIT listed(listing);
}

} // namespace vandrel
