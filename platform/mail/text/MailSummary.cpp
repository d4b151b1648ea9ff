#include "platform/mail/text/MailText.h"

#include <QBuffer>

#include "platform/mail/text/MailHeader.h"
#include "platform/mail/text/MailLines.h"

namespace vandrel {

MailSummary mailSummary(const QByteArray &headers, const MailLimits &limits)
{
    QBuffer device;
    device.setData(headers);
    device.open(QIODevice::ReadOnly);
    MailLineReader lines(device);
    MailHeader header(limits);
    MailLine line;
    while (lines.next(line) && header.add(line)) { }
    const MailFields &fields = header.fields();
    return {addressText(fields.from, limits), freeText(fields.date, limits),
            freeText(fields.subject, limits)};
}

} // namespace vandrel
