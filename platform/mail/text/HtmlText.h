#pragma once

#include <stop_token>

#include <QtGlobal>

#include "platform/mail/text/MailBody.h"
#include "platform/mail/text/ReadableText.h"

namespace vandrel {

/// Writes the text of an HTML document: paragraphs as lines, links as "text (address)", lists and tables in plain
/// characters, quotations after ">". Scripts, styles and what the document hides are left out, pictures stand as
/// their description; nothing is ever loaded.
///
/// At most `limit` octets (as UTF-8) are looked at, fewer where elements are nested thousands deep, since every
/// element that is open costs time. Returns false when the rest was left out.
bool writeHtmlText(MailCharacters &html, ReadableText &out, qint64 limit, const std::stop_token &stop);

} // namespace vandrel
