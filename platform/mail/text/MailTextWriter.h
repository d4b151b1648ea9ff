#pragma once

#include <stop_token>
#include <vector>

#include <QString>

#include "platform/mail/text/MailParts.h"
#include "platform/mail/text/MailText.h"
#include "platform/mail/text/ReadableText.h"

namespace vandrel {

/// Writes one mail: its header fields, the texts among its parts, and the list of the others.
class MailTextWriter
{
public:
    MailTextWriter(QIODevice &message, const MailLimits &limits, std::stop_token stop);

    /// `keeper` may be null.
    ReadableMail write(MailKeeper *keeper);

private:
    void writeMail(const MailPart &mail);
    void writeField(const QString &name, const QString &text);
    void writePart(const MailPart &part);
    void writeMultipart(const MailPart &part);
    void writeAlternative(const MailPart &part);
    void writeEnclosed(const MailPart &part);
    void writeText(const MailPart &part);
    void writePlain(const MailPart &part);
    void writeHtml(const MailPart &part);
    const MailPart *chosen(const MailPart &alternative);
    bool isBlank(const MailPart &part);
    QByteArray charsetOf(const MailPart &html);
    void writeNote(const QString &note);
    void writeFile(const MailPart &part);
    void list(const MailPart &part);
    void listFiles(const MailPart &part);
    void writeList(qint64 omitted);
    void writeShortened(qint64 omitted);

    QIODevice &m_message;
    MailLimits m_limits;
    std::stop_token m_stop;
    ReadableText m_out;
    std::vector<QString> m_listed;
    qint64 m_unlisted = 0;
    bool m_cut = false; // something was left out, and said so where it belongs
};

} // namespace vandrel
