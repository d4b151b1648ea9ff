#pragma once

#include <QByteArray>

namespace vandrel {

/// One piece of RTF.
struct RtfToken {
    enum class Type {
        End, ///< the input is used up
        GroupOpen,
        GroupClose,
        Word, ///< control word: `text` is its name, `hasNumber` and `number` its parameter
        Symbol, ///< control symbol other than \'hh: `text` is the one character
        Octet, ///< \'hh: `number` is the octet; a broken one (\'g) yields no token
        Text, ///< a run of plain octets, line ends left out
        Binary, ///< \binN: `text` is the data, cut at the end of the input
    };

    Type type = Type::End;
    QByteArrayView text;
    int number = 0;
    bool hasNumber = false;
    /// Binary: fewer octets were there than announced, or the number was negative.
    bool damaged = false;
};

/// Splits RTF octets into tokens. Linear in the input, never fails; the octets must outlive the tokens.
class RtfTokenizer
{
public:
    explicit RtfTokenizer(QByteArrayView rtf, qsizetype position = 0) : m_rtf(rtf), m_position(position) { }

    RtfToken next();

    /// Offset of the first octet that no token has used.
    qsizetype position() const { return m_position; }

    struct Skipped {
        /// The closing brace was found before the input ended.
        bool closed = false;
        /// No \bin inside lied about its length.
        bool intact = true;
    };
    /// Skips to behind the brace that closes the current group.
    Skipped skipGroup();

private:
    RtfToken escape();
    RtfToken controlWord();
    RtfToken octet();
    RtfToken plainText();
    void readNumber(RtfToken &token);
    RtfToken binary(const RtfToken &word);

    QByteArrayView m_rtf;
    qsizetype m_position = 0;
};

} // namespace vandrel
