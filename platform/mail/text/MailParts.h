#pragma once

#include <memory>
#include <optional>
#include <stop_token>
#include <vector>

#include "platform/mail/text/MailHeader.h"
#include "platform/mail/text/MailLimits.h"

class QIODevice;

namespace vandrel {

class MailKeeper;

/// A part of a mail, as its header describes it, and where in the mail it lies.
struct MailPart {
    MailContent content;
    /// For the mail itself, and for each mail enclosed in it.
    std::unique_ptr<MailFields> fields;
    /// The parts of a multipart, or the one mail that a message/rfc822 encloses. Empty for a multipart that proves
    /// to have no parts, which is to be taken as text.
    std::vector<std::unique_ptr<MailPart>> children;
    /// The body, in octets from the start of the mail.
    qint64 begin = 0;
    qint64 end = 0;
    /// What a body in base64 stands for, in octets; counted on the way, and only for those that are no multipart or
    /// enclosed mail.
    std::optional<qint64> base64Octets;
    /// True for a multipart or enclosed mail that is nested too deeply to be looked into.
    bool closed = false;

    bool isMultipart() const { return content.type.startsWith("multipart/"); }
    bool isEnclosedMail() const;
};

struct MailParts {
    std::unique_ptr<MailPart> root;
    /// Parts beyond the limit, which are not among the children.
    qint64 omitted = 0;
};

/// Finds the parts of the mail that `message` holds from its start, without decoding any. A stop leaves the parts
/// found so far. `keeper` is told of the octets that only files and the far ends of texts are made of; it may be null.
MailParts findMailParts(QIODevice &message,
                        const MailLimits &limits,
                        const std::stop_token &stop,
                        MailKeeper *keeper = nullptr);

} // namespace vandrel
