#pragma once

#include <vector>

#include <QString>

namespace vandrel {

/// The ASCII-compatible form of a host's name as typed, in lower case and without a closing dot; empty when it cannot
/// be a name.
QString hostNameInAscii(const QString &typed);

/// A scheme that an address may begin with, such as "pop3".
struct ServerScheme {
    QString name;
    quint16 port = 0;
    /// The connection is encrypted from its first octet.
    bool implicitTls = false;
};

/// Where a server is, read from what a person typed:
///
///     host    host:port    [IPv6]    [IPv6]:port    IPv6    scheme://[user[:password]@]host[:port][/path]
///     user:password@host[:port]
///
/// Blanks around it are dropped. Names beyond ASCII are turned into their ASCII-compatible form; user, password and
/// path are percent-decoded. The password is nowhere repeated in `problem`.
struct ServerAddress {
    /// Lower case; the first of the caller's schemes where none was typed.
    QString scheme;
    /// A name in ASCII-compatible form or an address, an IPv6 one without its brackets.
    QString host;
    quint16 port = 0;
    /// True for a scheme with implicit TLS, and for the usual port of such a scheme whatever the scheme typed.
    bool implicitTls = false;
    /// True when a port was typed rather than taken from the scheme.
    bool portGiven = false;
    QString user;
    QString password;
    /// True when a user, possibly empty, was typed before the host.
    bool userGiven = false;
    /// What follows the host, from its first "/" on; empty where nothing does.
    QString path;
    /// What is wrong with the address, as a sentence for the user; empty when it can be used.
    QString problem;

    bool isUsable() const { return problem.isEmpty(); }
    /// True for this machine's own names and addresses (localhost, 127.0.0.0/8, ::1).
    bool isThisMachine() const;

    /// Reads an address. `schemes` are those that the caller serves, its usual one first.
    static ServerAddress parse(const QString &typed, const std::vector<ServerScheme> &schemes);
};

} // namespace vandrel
