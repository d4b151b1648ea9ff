#pragma once

#include <vector>

#include <QByteArray>
#include <QString>

namespace vandrel {

/// One mailbox of a header field and of the envelope (RFC 5322 section 3.4, RFC 6531).
struct MailAddress {
    /// The display name as a person reads it; may be empty.
    QString name;
    /// The local part as it goes over the wire, quoted where it must be; UTF-8 where it is not ASCII.
    QByteArray local;
    /// The domain in ASCII (names of other scripts in their "xn--" form), or an address in brackets.
    QByteArray domain;

    QByteArray addrSpec() const { return local + '@' + domain; }
    /// True for a local part outside ASCII, which only a server with SMTPUTF8 takes.
    bool needsUtf8() const;
};

/// The addresses of a list as people type it: separated by commas or semicolons, each "user@domain",
/// "Name <user@domain>", "\"Name, with anything\" <user@domain>" or "user@domain (Name)". A group
/// ("Friends: a@x, b@x;") stands for its members, and a pasted "mailto:" is passed over. Empty places between
/// separators count for nothing.
///
/// Raises Invalid procedure call (5) with a text that names `field` and the place that cannot be understood.
std::vector<MailAddress> readMailAddresses(const QString &list, const QString &field);

/// A host's or mail domain's name in the ASCII form of the domain name system; empty when it is none.
QByteArray asciiDomain(const QString &domain);

} // namespace vandrel
