#pragma once

#include "platform/mail/text/MailParts.h"

namespace vandrel {

bool isHtml(const MailPart &part);

/// Whether the part's body is shown as text, rather than listed as a file.
bool isShownText(const MailPart &part);

} // namespace vandrel
