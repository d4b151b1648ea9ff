#pragma once

#include <functional>

#include <QByteArrayView>

namespace vandrel {

/// Finds the end of a message that a POP3 server sends, and takes off the dots that it put before lines beginning with
/// one. The message may come in pieces of any size.
class PopMessageReader
{
public:
    using Sink = std::function<void(QByteArrayView)>;

    /// `strict` where the server ends its own lines in CR LF: then a lone LF is part of a line of the message, as the
    /// standard has it. Otherwise a lone LF ends a line as well.
    explicit PopMessageReader(bool strict) : m_strict(strict) { }

    /// Reads the next octets, hands those of the message on, and returns how many were read: all of them, or those up
    /// to the end of the message.
    qsizetype read(QByteArrayView octets, const Sink &sink);
    bool isAtEnd() const { return m_state == State::End; }

private:
    enum class State {
        Text,
        /// Behind a dot that begins a line.
        Dot,
        /// Behind such a dot and a CR.
        DotReturn,
        End,
    };

    qsizetype readText(QByteArrayView octets, qsizetype at, const Sink &sink);
    qsizetype readBehindDot(QByteArrayView octets, qsizetype at);
    qsizetype readBehindReturn(QByteArrayView octets, qsizetype at, const Sink &sink);
    bool beginsLine(QByteArrayView octets, qsizetype at) const;
    void remember(QByteArrayView octets);

    bool m_strict;
    State m_state = State::Text;
    // The last two octets of the pieces before.
    char m_last = '\n';
    char m_lastButOne = '\r';
};

} // namespace vandrel
