#pragma once

#include <stop_token>

#include <QByteArray>
#include <QString>

#include "platform/mail/text/MailLimits.h"

class QIODevice;

namespace vandrel {

/// A received mail as a person reads it: the main header fields decoded (From, To, Cc, Date, Subject, a line
/// each), a blank line, the text, and a list of what is attached.
struct ReadableMail {
    /// Every line, the last one included, ends in CR LF. Lines that are too long for a text box are broken.
    QString text;
    /// True when the mail is larger than what is shown of it; the text then ends in a line that says so.
    bool shortened = false;
    /// True when a stop was requested: the text is incomplete and meant for nobody.
    bool cancelled = false;
};

/// Who keeps a mail while it is read, and can save what will not be read again. The reader reads a mail once from its
/// beginning to its end, and says on the way of what comes next whether it may ask for it a second time.
class MailKeeper
{
public:
    virtual ~MailKeeper() = default;
    /// What lies between `offset` and the place where the reader says keepAgain() will not be asked for again. When the
    /// reader asks for octets that it has not had before, it has said everything about those that it has had.
    virtual void keepOnlyTo(qint64 offset) = 0;
    virtual void keepAgain() = 0;
};

/// Turns the mail (RFC 5322, MIME RFC 2045 to 2049, 2231, 3676) that `message` holds from its start into readable
/// text. `message` is open for reading and not sequential; it may hold a hundred megabytes. Memory follows the
/// length of the text, not that of the attachments, which are only measured. A mail that is broken is shown as
/// far as possible: this never fails, and takes time in proportion to the mail's size.
///
/// Any thread, each with a device of its own. `stop` ends it within some milliseconds. `keeper` is told what of the mail
/// will not be asked for again.
ReadableMail readableMail(QIODevice &message,
                          const std::stop_token &stop = {},
                          const MailLimits &limits = {},
                          MailKeeper *keeper = nullptr);

/// What a list of mails shows of one.
struct MailSummary {
    QString from;
    QString date;
    QString subject;
};

/// Decodes the header fields among `headers`, which may go on with the mail's body. Each text is one line
/// without control characters; a field that is not there is empty. Any thread.
MailSummary mailSummary(const QByteArray &headers, const MailLimits &limits = {});

} // namespace vandrel
