#pragma once

#include <vector>

#include <QByteArray>
#include <QString>

#include "platform/mail/compose/MailAddress.h"

namespace vandrel {

/// Raises Invalid procedure call (5) for a text that may not stand in a header field: one with CR, LF or NUL,
/// which could smuggle in fields of its own, or with half a surrogate pair. `what` names the field in the
/// text.
void checkHeaderText(const QString &text, const QString &what);

/// The value of a field of free text (RFC 5322 section 2.2.1), ready for the wire: folded so that no line is
/// longer than 78 octets, without the final line break. What is not plain ASCII, or would be taken for an
/// encoded word, or has blanks that folding would lose, is sent as encoded words (RFC 2047, UTF-8).
/// `indent` is how much of the first line the field's name takes.
QByteArray headerText(const QString &text, qsizetype indent);

/// The value of an address field, in the same form. Names are plain, quoted, or encoded words; addresses
/// outside ASCII stand in UTF-8 (RFC 6532). A single address alone can make a line longer than 78 octets.
QByteArray headerAddresses(const std::vector<MailAddress> &addresses, qsizetype indent);

/// The value of a field with one parameter that holds a name, such as Content-Disposition with its
/// "filename": `value`; `parameter`=..., quoted where the name is plain ASCII, in the extended form of RFC
/// 2231 elsewhere and in numbered sections where it is long.
QByteArray headerWithParameter(const QByteArray &value, const QByteArray &parameter, const QString &text);

} // namespace vandrel
