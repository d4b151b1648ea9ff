#pragma once

#include <QHostAddress>
#include <QString>

namespace vandrel {

/// The host to ping, read from what was typed or put together by a scan: a name, an IPv4 address of four decimal
/// numbers, or an IPv6 address. Blanks around it and before its last number ("192.0.2. 5") do not count.
struct PingTarget {
    /// Null where a name was given.
    QHostAddress address;
    /// The name in its ASCII-compatible form; empty where an address was given.
    QString name;
    /// Without the blanks, for the user's eyes.
    QString shown;
    /// What is wrong with the text, as a sentence; empty when it can be pinged.
    QString problem;

    static PingTarget parse(const QString &typed);
};

} // namespace vandrel
