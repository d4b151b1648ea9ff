// Takes any octets as a mail. Whatever they are, the text is lines of what can be shown.
#include <algorithm>
#include <cstdint>

#include <QBuffer>

#include "platform/mail/text/MailText.h"

namespace {

/// Small limits, so that their edges are met.
vandrel::MailLimits smallLimits()
{
    vandrel::MailLimits limits;
    limits.depth = 3;
    limits.parts = 6;
    limits.listed = 2;
    limits.fieldOctets = 60;
    limits.fieldCharacters = 20;
    limits.characters = 100;
    limits.htmlOctets = 50;
    return limits;
}

bool isControl(QChar character)
{
    const char16_t code = character.unicode();
    return (code < 0x20 && code != u'\t' && code != u'\r' && code != u'\n') || (code >= 0x7F && code < 0xA0);
}

void requireLines(const QString &text)
{
    if (!text.isEmpty() && !text.endsWith(QStringLiteral("\r\n")))
        qFatal("the last line does not end");
    if (text.count(u'\r') != text.count(u'\n') || text.count(u'\n') != text.count(QStringLiteral("\r\n")))
        qFatal("a line ends in something else than CR LF");
    if (std::any_of(text.begin(), text.end(), isControl))
        qFatal("a control character is shown");
}

void requireOneLine(const QString &text)
{
    if (std::any_of(text.begin(), text.end(), isControl) || text.contains(u'\n') || text.contains(u'\r'))
        qFatal("a field is more than a line");
}

void read(const QByteArray &mail, const vandrel::MailLimits &limits)
{
    QBuffer device;
    device.setData(mail);
    device.open(QIODevice::ReadOnly);
    const vandrel::ReadableMail readable = vandrel::readableMail(device, {}, limits);
    if (readable.cancelled)
        qFatal("the conversion stopped by itself");
    requireLines(readable.text);
    const vandrel::MailSummary summary = vandrel::mailSummary(mail, limits);
    requireOneLine(summary.from);
    requireOneLine(summary.date);
    requireOneLine(summary.subject);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray mail(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    read(mail, {});
    read(mail, smallLimits());
    return 0;
}
