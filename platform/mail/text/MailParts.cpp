#include "platform/mail/text/MailParts.h"

#include <algorithm>
#include <optional>

#include "platform/mail/text/Base64Count.h"
#include "platform/mail/text/MailKinds.h"
#include "platform/mail/text/MailLines.h"
#include "platform/mail/text/MailText.h"

namespace vandrel {

namespace {

// An encoded mail would have to be decoded before its parts could be looked for.
bool isPlainEncoding(const QByteArray &encoding)
{
    return encoding != "base64" && encoding != "quoted-printable" && !encoding.contains("uue");
}

// How much of a part's body may be looked at again, from its beginning; nothing where all of it may be.
std::optional<qint64> octetsLookedAt(const MailPart &part, const MailLimits &limits)
{
    // Whether a body is in base64 at all is told from its beginning; how large the file is has been counted.
    constexpr qint64 sample = 128 * 1024;
    constexpr qint64 mostOctetsOfBase64 = 2;
    constexpr qint64 mostOctetsOfOthers = 4;
    const bool isShown = isShownText(part);
    const qint64 text = std::max(limits.textOctets, limits.htmlOctets) + sample;
    if (isPlainEncoding(part.content.encoding))
        return isShown ? text : 0;
    if (part.content.encoding == "base64")
        return isShown ? text * mostOctetsOfBase64 : sample;
    return isShown ? std::optional(text * mostOctetsOfOthers) : std::nullopt;
}

QByteArrayView withoutTrailingBlanks(QByteArrayView line)
{
    while (!line.isEmpty() && (line.back() == ' ' || line.back() == '\t'))
        line.chop(1);
    return line;
}

// Goes through the lines of a mail once, and keeps what is open: the multiparts and enclosed mails around the
// current line, and the part whose header or body the line belongs to.
class PartFinder
{
public:
    PartFinder(QIODevice &message, const MailLimits &limits, MailKeeper *keeper)
        : m_lines(message), m_limits(limits), m_keeper(keeper)
    {
        m_found.root = std::make_unique<MailPart>();
        m_found.root->fields = std::make_unique<MailFields>();
        beginPart(m_found.root.get(), 0);
    }

    MailParts find(const std::stop_token &stop)
    {
        MailLine line;
        while (!stop.stop_requested() && m_lines.next(line)) {
            take(line);
            // Outside of a header only boundaries matter, and outside of a multipart not even they.
            if (!m_header && m_open.empty())
                countRest(stop);
            else if (!m_header)
                count(m_lines.skipToBefore('-'));
        }
        endHeaders(m_next);
        // A part that nothing closes reaches to the end of the mail, its last line break included.
        m_lineBreak = m_next;
        closeTo(0);
        return std::move(m_found);
    }

private:
    struct Open {
        MailPart *part;
        QByteArray boundary; // empty for an enclosed mail, and for a multipart that does not state it
    };

    void take(const MailLine &line)
    {
        const qint64 begin = line.offset;
        const std::optional<std::size_t> matched = line.first ? matchedMultipart(line.octets) : std::nullopt;
        if (matched)
            takeBoundary(line, *matched);
        else
            takeContent(line, begin);
        m_lineBreak = line.offset + line.octets.size();
        m_next = line.next;
    }

    void takeContent(const MailLine &line, qint64 begin)
    {
        if (m_header && !m_header->add(line))
            endHeader(line.octets.isEmpty() ? line.next : begin);
        count(line.octets);
    }

    void count(QByteArrayView octets)
    {
        if (m_base64)
            m_base64->add(octets);
    }

    void countRest(const std::stop_token &stop)
    {
        QByteArrayView octets = m_lines.rest();
        for (; !octets.isEmpty() && !stop.stop_requested(); octets = m_lines.rest())
            count(octets);
        m_next = m_lines.position();
    }

    // The innermost open multipart whose boundary the line is.
    std::optional<std::size_t> matchedMultipart(QByteArrayView line)
    {
        if (!line.startsWith("--"))
            return {};
        const QByteArrayView text = withoutTrailingBlanks(line.sliced(2));
        for (std::size_t i = m_open.size(); i-- > 0;) {
            const QByteArray &boundary = m_open[i].boundary;
            if (!boundary.isEmpty() && (text == boundary || isClosing(text, boundary)))
                return i;
        }
        return guessedMultipart(text);
    }

    // A multipart that states no boundary has the one that its first such line shows.
    std::optional<std::size_t> guessedMultipart(QByteArrayView text)
    {
        constexpr qsizetype longestBoundary = 70;
        const bool mayBeOne = !m_current && !m_open.empty() && m_open.back().boundary.isEmpty()
            && !text.isEmpty() && text.size() <= longestBoundary && text.front() != ' ';
        if (!mayBeOne || !m_open.back().part->isMultipart())
            return {};
        m_open.back().boundary = text.toByteArray();
        return m_open.size() - 1;
    }

    static bool isClosing(QByteArrayView text, const QByteArray &boundary)
    {
        return text.size() == boundary.size() + 2 && text.startsWith(boundary) && text.endsWith("--");
    }

    void takeBoundary(const MailLine &line, std::size_t index)
    {
        const bool closing = withoutTrailingBlanks(line.octets).size() > m_open[index].boundary.size() + 2;
        endHeaders(line.offset);
        closeTo(closing ? index : index + 1);
        if (!closing)
            addPart(*m_open[index].part, line.next);
    }

    void addPart(MailPart &parent, qint64 begin)
    {
        if (m_count >= m_limits.parts) {
            ++m_found.omitted;
            return;
        }
        parent.children.push_back(std::make_unique<MailPart>());
        beginPart(parent.children.back().get(), begin);
    }

    void beginPart(MailPart *part, qint64 begin)
    {
        ++m_count;
        m_current = part;
        m_current->begin = begin;
        m_header.emplace(m_limits);
    }

    void endHeader(qint64 bodyBegin)
    {
        MailPart &part = *m_current;
        part.content = mailContent(m_header->fields());
        if (part.content.type.isEmpty())
            part.content.type = defaultType();
        if (part.fields)
            *part.fields = m_header->fields();
        part.begin = bodyBegin;
        part.end = bodyBegin;
        m_header.reset();
        openPart(part);
    }

    // Where no body can follow: the end of a header that announces a mail begins one more.
    void endHeaders(qint64 bodyBegin)
    {
        while (m_header)
            endHeader(bodyBegin);
    }

    void openPart(MailPart &part)
    {
        const bool isMail = part.isEnclosedMail() && isPlainEncoding(part.content.encoding);
        if (!isMail && !part.isMultipart()) {
            if (part.content.encoding == "base64")
                m_base64.emplace();
            if (const auto looked = octetsLookedAt(part, m_limits); looked && m_keeper)
                m_keeper->keepOnlyTo(part.begin + *looked);
            return;
        }
        if (m_open.size() >= static_cast<std::size_t>(m_limits.depth)) {
            part.closed = true;
            return;
        }
        m_current = nullptr;
        m_open.push_back({&part, part.isMultipart() ? boundaryOf(part) : QByteArray()});
        if (isMail && m_count < m_limits.parts) {
            part.children.push_back(std::make_unique<MailPart>());
            part.children.back()->fields = std::make_unique<MailFields>();
            beginPart(part.children.back().get(), part.begin);
        }
    }

    static QByteArray boundaryOf(const MailPart &part)
    {
        return withoutTrailingBlanks(part.content.boundary).toByteArray();
    }

    QByteArray defaultType() const
    {
        const bool digest = !m_open.empty() && m_open.back().part->content.type == "multipart/digest";
        return digest ? QByteArrayLiteral("message/rfc822") : QByteArrayLiteral("text/plain");
    }

    // Ends the current part, and what is open from the given depth on, before the latest line break: that one
    // belongs to the boundary.
    void closeTo(std::size_t depth)
    {
        if (m_current)
            m_current->end = std::max(m_current->begin, m_lineBreak);
        if (m_current && m_base64)
            m_current->base64Octets = m_base64->size();
        m_base64.reset();
        if (m_current && m_keeper)
            m_keeper->keepAgain();
        m_current = nullptr;
        for (; m_open.size() > depth; m_open.pop_back())
            m_open.back().part->end = std::max(m_open.back().part->begin, m_lineBreak);
    }

    MailLineReader m_lines;
    MailLimits m_limits;
    MailKeeper *m_keeper;
    MailParts m_found;
    std::vector<Open> m_open;
    MailPart *m_current = nullptr;
    std::optional<MailHeader> m_header; // while the header of the current part is read
    std::optional<Base64Count> m_base64; // while the body of the current part is read, and is of that kind
    int m_count = 0;
    qint64 m_lineBreak = 0; // where the break of the latest line is
    qint64 m_next = 0; // where the latest line ends
};

} // namespace

bool MailPart::isEnclosedMail() const
{
    return content.type == "message/rfc822" || content.type == "message/global"
        || content.type == "message/news";
}

MailParts
findMailParts(QIODevice &message, const MailLimits &limits, const std::stop_token &stop, MailKeeper *keeper)
{
    return PartFinder(message, limits, keeper).find(stop);
}

} // namespace vandrel
