#pragma once

#include <optional>

#include <QByteArray>
#include <QByteArrayList>
#include <QString>

namespace vandrel {

/// One reply of an SMTP server (RFC 5321 section 4.2).
struct SmtpReply {
    /// 200 to 599.
    int code = 0;
    /// What follows the code on each line, as it came; at least one.
    QByteArrayList texts;

    /// 2 completed, 3 go on, 4 refused for now, 5 refused.
    int kind() const { return code / 100; }
    /// The server's words as a person reads them, on one line: "250 ok". Octets that are not UTF-8 are taken
    /// one by one, control characters become blanks, and a very long text is cut.
    QString words() const;
};

/// Puts the lines of a server together to replies.
class SmtpReplyReader
{
public:
    /// Lines and octets that one reply may have.
    static constexpr int mostLines = 500;
    static constexpr qsizetype mostOctets = 64 * 1024;

    enum class State {
        /// The reply goes on.
        More,
        /// reply() is complete; the next line begins another one.
        Complete,
        /// This is no reply: a code that is none or changes within a reply, or more lines than there may be.
        Broken,
    };

    /// Takes a line without its end. After Broken, every further line is broken as well.
    State take(QByteArrayView line);
    /// The reply taken last. Only after Complete.
    const SmtpReply &reply() const { return m_reply; }

private:
    SmtpReply m_reply;
    qsizetype m_octets = 0;
    State m_state = State::Complete;
};

/// What a server says it can do in its reply to EHLO.
struct SmtpServices {
    bool startTls = false;
    bool eightBitMime = false;
    bool smtpUtf8 = false;
    bool size = false;
    /// Upper case, in the server's order.
    QByteArrayList logins;
    /// The largest message it takes, in octets, when it names one beside `size`.
    std::optional<qint64> largestMessage;

    static SmtpServices of(const SmtpReply &reply);
};

} // namespace vandrel
