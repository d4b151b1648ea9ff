#pragma once

#include <QByteArray>
#include <QString>

#include "platform/mail/text/MailLimits.h"
#include "platform/mail/text/MailLines.h"

namespace vandrel {

/// The header fields that matter here, unfolded and not decoded; of each the first one, of the recipients all.
struct MailFields {
    QByteArray from;
    QByteArray to;
    QByteArray cc;
    QByteArray date;
    QByteArray subject;
    QByteArray contentType;
    QByteArray disposition;
    QByteArray encoding;
};

/// Collects the fields of one header from its lines.
class MailHeader
{
public:
    explicit MailHeader(const MailLimits &limits) : m_limits(limits) { }

    /// False when the line does not belong to the header any more: the blank line after it, or, where that line is
    /// missing, the first line of the body.
    bool add(const MailLine &line);

    const MailFields &fields() const { return m_fields; }

private:
    bool begin(QByteArrayView line);
    void append(QByteArrayView octets);

    MailLimits m_limits;
    MailFields m_fields;
    QByteArray *m_field = nullptr; // the one that the latest line belongs to; null: one that does not matter
    bool m_begun = false;
};

/// What Content-Type, Content-Disposition and Content-Transfer-Encoding say of a part.
struct MailContent {
    /// "text/plain", in lower case; empty when none is stated.
    QByteArray type;
    QByteArray charset;
    QByteArray boundary;
    /// The file name, decoded, without folders; may be empty.
    QString name;
    bool attached = false;
    /// Paragraphs that flow (RFC 3676), and whether the blank at a flowing line's end goes.
    bool flowed = false;
    bool deletesSpace = false;
    /// In lower case: "base64", ...
    QByteArray encoding;
};

MailContent mailContent(const MailFields &fields);

/// A field of free text (Subject) as one line of at most `limits.fieldCharacters`, its encoded words (RFC 2047)
/// decoded, without control characters and without those that turn the direction of text around.
QString freeText(const QByteArray &field, const MailLimits &limits);

/// A field of addresses likewise.
QString addressText(const QByteArray &field, const MailLimits &limits);

} // namespace vandrel
