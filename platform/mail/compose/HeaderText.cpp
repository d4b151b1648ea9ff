#include "platform/mail/compose/HeaderText.h"

#include <algorithm>

#include <QByteArrayList>
#include <QList>
#include <QStringList>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr qsizetype longestHeaderLine = 78;
// RFC 2047, section 2: an encoded word with its frame.
constexpr qsizetype longestWord = 75;
const QByteArray lineFold("\r\n ");
const QByteArray encodedStart("=?utf-8?");

// Puts pieces on lines, a fold before each one that would make its line too long.
class Folder
{
public:
    explicit Folder(qsizetype indent) : m_column(indent) { }

    void add(const QByteArray &piece)
    {
        // A fold right behind the field's name would be read as a blank of the text.
        const bool first = m_text.isEmpty();
        if (!first && m_column + 1 + piece.size() > longestHeaderLine) {
            m_text += lineFold;
            m_column = 1;
        } else if (!first) {
            m_text += ' ';
            ++m_column;
        }
        m_text += piece;
        m_column += piece.size();
    }

    const QByteArray &text() const { return m_text; }

private:
    QByteArray m_text;
    qsizetype m_column;
};

bool isPrintable(QChar c)
{
    return c >= u' ' && c <= u'~';
}

bool isPrintableAscii(const QString &text)
{
    return std::all_of(text.cbegin(), text.cend(), isPrintable);
}

// Text that stands in a header as it is: its blanks survive folding, its words fit on lines.
bool isPlainHeader(const QString &text)
{
    if (!isPrintableAscii(text) || text.contains(QStringLiteral("=?")))
        return false;
    const QStringList words = text.split(u' ');
    return std::all_of(words.begin(), words.end(),
                       [](const QString &word) { return !word.isEmpty() && word.size() <= 60; });
}

// RFC 2047, section 5 (3): what a word may hold in every place where one may stand.
bool isWordSafe(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '!' || c == '*'
        || c == '+' || c == '-' || c == '/';
}

QByteArray hexadecimal(char c)
{
    return QByteArray::number(static_cast<unsigned char>(c), 16).toUpper().rightJustified(2, '0');
}

QByteArray quotedWord(const QByteArray &octets)
{
    QByteArray word;
    for (const char c : octets) {
        if (c == ' ')
            word += '_';
        else if (isWordSafe(c))
            word += c;
        else
            word += '=' + hexadecimal(c);
    }
    return word;
}

// Words of whole characters: a reader may decode each for itself. The first has to share its line with
// `indent` octets of the field's name.
QByteArrayList encodedWords(const QString &text, qsizetype indent)
{
    const QByteArray octets = text.toUtf8();
    const bool base64 = quotedWord(octets).size() > octets.toBase64().size();
    const QByteArray start = encodedStart + (base64 ? "B?" : "Q?");
    const auto encoded = [&](const QByteArray &part) {
        return start + (base64 ? part.toBase64() : quotedWord(part)) + "?=";
    };
    QByteArrayList words;
    QByteArray part;
    for (const char32_t character : text.toUcs4()) {
        const QByteArray next = QString::fromUcs4(&character, 1).toUtf8();
        const qsizetype room
            = words.isEmpty() ? std::min(longestWord, longestHeaderLine - indent) : longestWord;
        if (!part.isEmpty() && encoded(part + next).size() > room) {
            words += encoded(part);
            part.clear();
        }
        part += next;
    }
    if (!part.isEmpty())
        words += encoded(part);
    return words;
}

QByteArray quotedString(const QString &text)
{
    QString escaped = text;
    escaped.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    return '"' + escaped.toLatin1() + '"';
}

bool isAtoms(const QString &name)
{
    return std::all_of(name.cbegin(), name.cend(), [](QChar c) {
        return c == u' ' || (c.isLetterOrNumber() && c.unicode() < 0x80)
            || QStringView(u"!#$%&'*+-/=?^_`{|}~").contains(c);
    });
}

QByteArrayList namePieces(const QString &name, qsizetype indent)
{
    if (name.isEmpty())
        return {};
    if (!isPlainHeader(name))
        return encodedWords(name, indent);
    if (isAtoms(name))
        return name.toLatin1().split(' ');
    return name.size() <= 60 ? QByteArrayList{quotedString(name)} : encodedWords(name, indent);
}

// RFC 2231, section 7: "attribute-char".
bool isAttributeChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')
        || QByteArrayView("!#$&+-.^_`{|}~").contains(c);
}

QByteArray percentEncoded(char32_t character)
{
    QByteArray encoded;
    for (const char c : QString::fromUcs4(&character, 1).toUtf8())
        encoded += isAttributeChar(c) ? QByteArray(1, c) : '%' + hexadecimal(c);
    return encoded;
}

// A name that a quoted string carries on one line, with all its blanks.
bool isPlainParameter(const QString &text)
{
    return isPrintableAscii(text) && text.size() <= 60 && !text.contains(QStringLiteral("=?"))
        && text.trimmed() == text;
}

} // namespace

void checkHeaderText(const QString &text, const QString &what)
{
    const bool broken = text.contains(u'\r') || text.contains(u'\n');
    if (!broken && !text.contains(QChar()) && text.isValidUtf16())
        return;
    const QString why = broken ? QStringLiteral("a line break") : QStringLiteral("a character that is none");
    throw RuntimeError(
        error::InvalidProcedureCall,
        QStringLiteral("%1 contains %2, which a mail cannot carry there. Remove it and send again.")
            .arg(what, why));
}

QByteArray headerText(const QString &text, qsizetype indent)
{
    Folder folder(indent);
    const QByteArrayList pieces = text.isEmpty()
        ? QByteArrayList()
        : (isPlainHeader(text) ? text.toLatin1().split(' ') : encodedWords(text, indent));
    for (const QByteArray &piece : pieces)
        folder.add(piece);
    return folder.text();
}

QByteArray headerAddresses(const std::vector<MailAddress> &addresses, qsizetype indent)
{
    Folder folder(indent);
    for (std::size_t i = 0; i < addresses.size(); ++i) {
        const MailAddress &address = addresses[i];
        for (const QByteArray &piece : namePieces(address.name, indent))
            folder.add(piece);
        const QByteArray comma = i + 1 < addresses.size() ? QByteArray(",") : QByteArray();
        const QByteArray spec = address.addrSpec();
        folder.add((address.name.isEmpty() ? spec : '<' + spec + '>') + comma);
    }
    return folder.text();
}

QByteArray headerWithParameter(const QByteArray &value, const QByteArray &parameter, const QString &text)
{
    if (isPlainParameter(text))
        return value + ';' + lineFold + parameter + '=' + quotedString(text);
    QByteArrayList sections{QByteArrayLiteral("utf-8''")};
    for (const char32_t character : text.toUcs4()) {
        const QByteArray encoded = percentEncoded(character);
        if (sections.last().size() + encoded.size() > 60)
            sections += QByteArray();
        sections.last() += encoded;
    }
    if (sections.size() == 1)
        return value + ';' + lineFold + parameter + "*=" + sections.first();
    QByteArray field = value;
    for (qsizetype i = 0; i < sections.size(); ++i)
        field += ';' + lineFold + parameter + '*' + QByteArray::number(i) + "*=" + sections[i];
    return field;
}

} // namespace vandrel
