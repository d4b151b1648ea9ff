#include "platform/mail/text/MailKinds.h"

#include <QList>

namespace vandrel {

namespace {

// Texts that are made for programs.
bool isData(const QByteArray &type)
{
    static const QList<QByteArray> types{"text/calendar", "text/vcard", "text/x-vcard",   "text/directory",
                                         "text/rtf",      "text/css",   "text/javascript"};
    return types.contains(type);
}

// Texts under other names: what became of a mail that was sent.
bool isReport(const QByteArray &type)
{
    static const QList<QByteArray> types{"message/delivery-status", "message/disposition-notification",
                                         "message/global-delivery-status", "message/global-headers"};
    return types.contains(type);
}

} // namespace

bool isHtml(const MailPart &part)
{
    return part.content.type == "text/html" || part.content.type == "application/xhtml+xml";
}

bool isShownText(const MailPart &part)
{
    const QByteArray &type = part.content.type;
    if (part.content.attached || part.closed)
        return false;
    return isHtml(part) || isReport(type) || (type.startsWith("text/") && !isData(type));
}

} // namespace vandrel
