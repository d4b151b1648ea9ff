#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

namespace vandrel {

/// A server's words on one line, fit to be shown, at most 300 characters.
QString popText(const QByteArray &octets);

/// The first line of a POP3 server's answer (RFC 1939, RFC 5034).
struct PopReply {
    enum class Kind {
        Ok,
        Refused,
        /// "+ ...": the server waits for the next step of a login.
        Continuation,
        Malformed,
    };

    Kind kind = Kind::Malformed;
    /// What follows the indicator, without the blank before it.
    QByteArray words;

    bool isOk() const { return kind == Kind::Ok; }
    QString text() const { return popText(words); }

    static PopReply parse(const QByteArray &line);
};

/// Two numbers as STAT and LIST give them. A number past 2^63-1 becomes 2^63-1.
struct PopNumbers {
    qint64 first = 0;
    qint64 second = 0;

    /// Nothing where the words do not begin with two unsigned decimal numbers; what follows them is not read.
    static std::optional<PopNumbers> parse(const QByteArray &words);
};

/// What a server offers (RFC 2449).
struct PopCapabilities {
    bool stls = false;
    bool top = false;
    bool pipelining = false;
    bool user = false;
    /// Upper case.
    QByteArrayList sasl;
    /// False where the server does not know the question.
    bool stated = false;

    /// Reads one line of the answer to CAPA.
    void add(const QByteArray &line);
};

/// The time stamp of a greeting, angle brackets included, by which APOP is offered; empty when there is none, or one
/// that is no proper message identifier, which an attacker may have made up.
QByteArray apopStamp(const QByteArray &greeting);

} // namespace vandrel
