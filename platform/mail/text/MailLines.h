#pragma once

#include <QByteArray>
#include <QByteArrayView>

class QIODevice;

namespace vandrel {

/// A line of a mail, or a piece of one that is too long to be held whole.
struct MailLine {
    /// Without the line break. Valid until the next line is read.
    QByteArrayView octets;
    /// Where `octets` begin, from the start of the mail.
    qint64 offset = 0;
    /// Where the next line begins; `offset` plus the count of octets for a piece with more to come.
    qint64 next = 0;
    /// True for the first piece of a line, and for one that came whole.
    bool first = true;
    /// True for the last piece of a line, and for one that came whole.
    bool last = true;
};

/// Reads a mail line by line in bounded memory. CR LF, LF and CR end a line; so does CR CR LF, which careless
/// gateways make of CR LF.
class MailLineReader
{
public:
    /// Reads from the start of `device`, which outlives the reader.
    explicit MailLineReader(QIODevice &device);

    /// False at the end of the mail.
    bool next(MailLine &line);
    /// Passes over lines that need not be looked at, since they do not begin with `octet`: those that are in memory, but
    /// for the last one before a line that does, so that next() tells where its line break is. Returns them, valid until
    /// the next line is read.
    QByteArrayView skipToBefore(char octet);
    /// The rest of the mail in pieces, whatever its lines, each valid until the next one is read; empty at its end. No line
    /// is read after it.
    QByteArrayView rest();
    /// Where what is read next begins, from the start of the mail.
    qint64 position() const { return m_offset + m_begin; }

private:
    struct Break {
        qsizetype at = -1;
        qsizetype length = 0;
    };

    void refill();
    void takeLine(MailLine &line, Break lineBreak);
    void takePiece(MailLine &line);
    Break findBreak();
    qsizetype lengthOfReturn(qsizetype at) const;
    qsizetype nearestLineFeed();

    QIODevice &m_device;
    QByteArray m_buffer;
    qint64 m_offset = 0; // of the buffer's beginning
    qsizetype m_begin = 0;
    qsizetype m_end = 0;
    qsizetype m_lineFeed = -1; // the first one at or after m_begin, once looked for
    qint64 m_plainTo = 0; // from the start of the mail: no line up to here begins as skipToBefore() was asked
    bool m_atEnd = false;
    bool m_insideLine = false;
};

} // namespace vandrel
