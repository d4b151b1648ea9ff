#pragma once

#include <QtGlobal>

namespace vandrel {

/// Bounds on what is taken from one mail, so that no mail takes more time or memory than its size warrants.
/// What lies beyond a bound is counted and said, never silently dropped.
struct MailLimits {
    /// Multiparts and enclosed messages within each other; a deeper one is listed like a file.
    int depth = 50;
    /// Parts that are looked at.
    int parts = 10'000;
    /// Lines of the list of attachments.
    int listed = 1'000;
    /// Octets kept of one header field. Recipients of a large list take some tens of thousands.
    int fieldOctets = 64 * 1024;
    /// Characters shown of one header field.
    int fieldCharacters = 4'000;
    /// Characters shown of one mail: more than anybody reads, and no more than a text box takes at once.
    qint64 characters = 4 * 1024 * 1024;
    /// Octets of one text, after its transfer encoding, that need be kept for that: characters are rarely longer.
    qint64 textOctets = 16 * 1024 * 1024;
    /// Characters of a line, after which it is broken: a text box takes long over a line without end. At least 200.
    int lineCharacters = 2'000;
    /// Octets of one HTML text, after its transfer encoding, that are looked at.
    qint64 htmlOctets = 16 * 1024 * 1024;
};

} // namespace vandrel
