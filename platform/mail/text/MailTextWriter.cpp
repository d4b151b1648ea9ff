#include "platform/mail/text/MailTextWriter.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QList>
#include <QLocale>

#include "platform/mail/text/FlowedText.h"
#include "platform/mail/text/Harmless.h"
#include "platform/mail/text/HtmlText.h"
#include "platform/mail/text/MailBody.h"
#include "platform/mail/text/MailKinds.h"

namespace vandrel {

namespace {

QString formattedCount(qint64 count)
{
    return QLocale(QLocale::English).toString(count);
}

QString formattedSize(qint64 octets)
{
    return QLocale(QLocale::English).formattedDataSize(octets, 1, QLocale::DataSizeTraditionalFormat);
}

// The text that a person would see first of a part; null when there is none.
const MailPart *leadingText(const MailPart &part)
{
    if (part.children.empty())
        return isShownText(part) || part.isMultipart() ? &part : nullptr;
    return part.isMultipart() ? leadingText(*part.children.front()) : nullptr;
}

bool isSmimeMessage(const QByteArray &type)
{
    return type == "application/pkcs7-mime" || type == "application/x-pkcs7-mime";
}

// The part with its body taken as it is.
MailPart asPlainOctets(const MailPart &part)
{
    MailPart plain;
    plain.content = part.content;
    plain.content.encoding.clear();
    plain.begin = part.begin;
    plain.end = part.end;
    return plain;
}

} // namespace

MailTextWriter::MailTextWriter(QIODevice &message, const MailLimits &limits, std::stop_token stop)
    : m_message(message), m_limits(limits), m_stop(std::move(stop)),
      m_out(limits.characters, limits.lineCharacters)
{ }

ReadableMail MailTextWriter::write(MailKeeper *keeper)
{
    const MailParts parts = findMailParts(m_message, m_limits, m_stop, keeper);
    writeMail(*parts.root);
    m_out.lift();
    if (m_out.omitted() > 0)
        writeShortened(m_out.omitted());
    writeList(parts.omitted);
    ReadableMail mail;
    mail.shortened = m_cut;
    mail.cancelled = m_stop.stop_requested();
    mail.text = m_out.take();
    return mail;
}

void MailTextWriter::writeMail(const MailPart &mail)
{
    const MailFields &fields = *mail.fields;
    m_out.startParagraph();
    writeField(QStringLiteral("From"), addressText(fields.from, m_limits));
    writeField(QStringLiteral("To"), addressText(fields.to, m_limits));
    writeField(QStringLiteral("Cc"), addressText(fields.cc, m_limits));
    writeField(QStringLiteral("Date"), freeText(fields.date, m_limits));
    writeField(QStringLiteral("Subject"), freeText(fields.subject, m_limits));
    writePart(mail);
}

void MailTextWriter::writeField(const QString &name, const QString &text)
{
    if (!text.isEmpty())
        m_out.addLine(name + QStringLiteral(": ") + text);
}

void MailTextWriter::writePart(const MailPart &part)
{
    if (m_stop.stop_requested())
        return;
    if (part.isMultipart() && !part.children.empty())
        writeMultipart(part);
    else if (!part.children.empty())
        writeEnclosed(part);
    else if (isShownText(part) || (part.isMultipart() && !part.closed))
        writeText(part);
    else
        writeFile(part);
}

void MailTextWriter::writeMultipart(const MailPart &part)
{
    if (part.content.type == "multipart/alternative") {
        writeAlternative(part);
        return;
    }
    if (part.content.type == "multipart/encrypted")
        writeNote(QStringLiteral("(This mail is encrypted; its text cannot be shown here.)"));
    for (const auto &child : part.children)
        writePart(*child);
}

void MailTextWriter::writeAlternative(const MailPart &part)
{
    const MailPart *const shown = chosen(part);
    for (const auto &child : part.children) {
        if (child.get() == shown)
            writePart(*child);
        else
            listFiles(*child);
    }
}

// Plain text, when there is any in it; else the richest of those that can be shown, which comes last.
const MailPart *MailTextWriter::chosen(const MailPart &alternative)
{
    const MailPart *last = alternative.children.back().get();
    bool found = false;
    for (std::size_t i = alternative.children.size(); i-- > 0;) {
        const MailPart *const each = alternative.children[i].get();
        const MailPart *const text = leadingText(*each);
        if (!text || isBlank(*text))
            continue;
        if (!isHtml(*text))
            return each;
        if (!found)
            last = each;
        found = true;
    }
    return last;
}

bool MailTextWriter::isBlank(const MailPart &part)
{
    constexpr qint64 looked = 64 * 1024;
    MailCharacters characters(m_message, part, part.content.charset, m_stop);
    qint64 seen = 0;
    for (QString text = characters.next(); !text.isEmpty() && seen < looked; text = characters.next()) {
        if (!text.trimmed().isEmpty())
            return false;
        seen += text.size();
    }
    return true;
}

void MailTextWriter::writeEnclosed(const MailPart &part)
{
    m_out.startParagraph();
    m_out.addLine(QStringLiteral("----- Enclosed mail -----"));
    writeMail(*part.children.front());
    m_out.startParagraph();
    m_out.addLine(QStringLiteral("----- End of enclosed mail -----"));
}

void MailTextWriter::writeText(const MailPart &part)
{
    m_out.startParagraph();
    const qint64 before = m_out.added();
    if (isHtml(part))
        writeHtml(part);
    else
        writePlain(part);
    // What cannot be decoded at all is better shown as it came than not at all.
    if (m_out.added() == before && !part.content.encoding.isEmpty())
        writePlain(asPlainOctets(part));
    m_out.startLine();
    if (!part.content.name.isEmpty())
        list(part);
}

void MailTextWriter::writePlain(const MailPart &part)
{
    MailCharacters characters(m_message, part, part.content.charset, m_stop);
    FlowedText flowed(m_out, part.content.deletesSpace);
    QString text;
    // Nothing is decoded only to be left out.
    while (!m_out.isFull() && !(text = characters.next()).isEmpty()) {
        if (part.content.flowed)
            flowed.add(text);
        else
            m_out.add(text);
    }
    flowed.finish();
    if (characters.left() > 0)
        m_out.omit(characters.left());
}

void MailTextWriter::writeHtml(const MailPart &part)
{
    if (m_out.isFull()) {
        m_out.omit(part.end - part.begin);
        return;
    }
    MailCharacters characters(m_message, part, charsetOf(part), m_stop);
    if (!writeHtmlText(characters, m_out, m_limits.htmlOctets, m_stop) && !m_stop.stop_requested()) {
        m_cut = true;
        writeNote(QStringLiteral("(The rest of this HTML text is too large to be shown.)"));
    }
}

// A document without a charset in its part's header may name one itself, near its beginning.
QByteArray MailTextWriter::charsetOf(const MailPart &html)
{
    if (!html.content.charset.isEmpty())
        return html.content.charset;
    constexpr qsizetype looked = 2048;
    MailOctets octets(m_message, html, m_stop);
    const QByteArrayView sample = octets.next();
    const QByteArray beginning = sample.first(std::min(sample.size(), looked)).toByteArray().toLower();
    const QByteArrayView key("charset=");
    const qsizetype at = beginning.indexOf(key);
    if (at < 0)
        return {};
    const QByteArray rest = beginning.mid(at + key.size()).trimmed();
    const qsizetype begin = rest.startsWith('"') || rest.startsWith('\'') ? 1 : 0;
    const auto end = std::find_if(rest.begin() + begin, rest.end(),
                                  [](char octet) { return QByteArrayView("\"' \t\r\n/>;").contains(octet); });
    const QByteArray name = rest.sliced(begin, end - rest.begin() - begin);
    // A document that can be read as octets so far is not in one of these, whatever it says.
    return name.startsWith("utf-16") || name.startsWith("utf-32") ? QByteArray() : name;
}

void MailTextWriter::writeNote(const QString &note)
{
    m_out.startParagraph();
    m_out.addLine(note);
}

void MailTextWriter::writeFile(const MailPart &part)
{
    if (isSmimeMessage(part.content.type))
        writeNote(
            QStringLiteral("(A text that is encrypted, or signed in a sealed form, cannot be shown here.)"));
    list(part);
}

void MailTextWriter::listFiles(const MailPart &part)
{
    for (const auto &child : part.children)
        listFiles(*child);
    if (part.children.empty() && !isShownText(part))
        list(part);
}

void MailTextWriter::list(const MailPart &part)
{
    if (m_listed.size() >= static_cast<std::size_t>(m_limits.listed)) {
        ++m_unlisted;
        return;
    }
    constexpr qsizetype longestType = 100;
    const QString name = part.content.name.isEmpty() ? QStringLiteral("unnamed") : part.content.name;
    const QString type = harmlessLine(QString::fromUtf8(part.content.type), longestType);
    const QString size = formattedSize(decodedSize(m_message, part, m_stop));
    const QString remark = part.closed ? QStringLiteral(", nested too deeply to be shown") : QString();
    m_listed.push_back(QStringLiteral("  %1 (%2, %3%4)").arg(name, type, size, remark));
}

void MailTextWriter::writeList(qint64 omitted)
{
    const qint64 more = m_unlisted + omitted;
    if (m_listed.empty() && more == 0)
        return;
    m_out.startParagraph();
    m_out.addLine(QStringLiteral("Attachments:"));
    for (const QString &line : m_listed)
        m_out.addLine(line);
    if (more > 0) {
        m_cut = true;
        m_out.addLine(QStringLiteral("  and %1 more").arg(formattedCount(more)));
    }
}

void MailTextWriter::writeShortened(qint64 omitted)
{
    m_cut = true;
    writeNote(QStringLiteral("(This mail is too long to be shown whole: about %1 of text are left out.)")
                  .arg(formattedSize(omitted)));
}

ReadableMail
readableMail(QIODevice &message, const std::stop_token &stop, const MailLimits &limits, MailKeeper *keeper)
{
    return MailTextWriter(message, limits, stop).write(keeper);
}

} // namespace vandrel
