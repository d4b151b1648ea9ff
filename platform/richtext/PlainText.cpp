#include "platform/richtext/PlainText.h"

#include <algorithm>
#include <array>
#include <optional>

#include <QLocale>
#include <QStringConverter>
#include <QTextCursor>

#include "platform/richtext/CodePages.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// Large enough that the document's own cost a call disappears, small enough that a cancelled read ends soon.
constexpr qsizetype chunkSize = 1024 * 1024;

struct Mark {
    QByteArrayView octets;
    TextEncoding encoding;
};

// The longer marks first: one of them begins like a shorter one.
constexpr std::array marks{
    Mark{QByteArrayView("\xFF\xFE\0\0", 4), TextEncoding::Utf32LittleEndian},
    Mark{QByteArrayView("\0\0\xFE\xFF", 4), TextEncoding::Utf32BigEndian},
    Mark{QByteArrayView("\xEF\xBB\xBF", 3), TextEncoding::Utf8},
    Mark{QByteArrayView("\xFF\xFE", 2), TextEncoding::Utf16LittleEndian},
    Mark{QByteArrayView("\xFE\xFF", 2), TextEncoding::Utf16BigEndian},
};

const Mark *markOf(const QByteArray &octets)
{
    const auto found = std::find_if(marks.begin(), marks.end(),
                                    [&octets](const Mark &mark) { return octets.startsWith(mark.octets); });
    return found != marks.end() ? &*found : nullptr;
}

// Without the last character, when it is one of several octets that did not all fit.
QByteArrayView withoutCutCharacter(QByteArrayView octets)
{
    qsizetype end = octets.size();
    for (int back = 1; back <= 3 && back <= octets.size(); ++back) {
        const auto octet = static_cast<unsigned char>(octets[octets.size() - back]);
        if (octet >= 0xC0) {
            const int length = octet >= 0xF0 ? 4 : octet >= 0xE0 ? 3 : 2;
            if (length > back)
                end = octets.size() - back;
            break;
        }
        if (octet < 0x80)
            break;
    }
    return octets.first(end);
}

bool isStrictUtf8(QByteArrayView octets)
{
    return QUtf8StringView(octets.data(), octets.size()).isValidUtf8();
}

struct ZeroCounts {
    qsizetype even = 0;
    qsizetype odd = 0;
};

ZeroCounts countZeros(QByteArrayView octets)
{
    ZeroCounts zeros;
    for (qsizetype i = 0; i + 1 < octets.size(); i += 2) {
        zeros.even += octets[i] == '\0';
        zeros.odd += octets[i + 1] == '\0';
    }
    return zeros;
}

// Most characters of a western text have a zero in the same half, and hardly any in the other one.
std::optional<TextEncoding> unmarkedUtf16(const QByteArray &octets)
{
    const QByteArrayView sample = QByteArrayView(octets).first(std::min<qsizetype>(octets.size(), 64 * 1024));
    const qsizetype units = sample.size() / 2;
    if (units < 2)
        return {};
    const ZeroCounts zeros = countZeros(sample);
    if (zeros.odd * 10 >= units * 4 && zeros.even * 50 <= units)
        return TextEncoding::Utf16LittleEndian;
    if (zeros.even * 10 >= units * 4 && zeros.odd * 50 <= units)
        return TextEncoding::Utf16BigEndian;
    return {};
}

QStringConverter::Encoding converterOf(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf16LittleEndian:
        return QStringConverter::Utf16LE;
    case TextEncoding::Utf16BigEndian:
        return QStringConverter::Utf16BE;
    case TextEncoding::Utf32LittleEndian:
        return QStringConverter::Utf32LE;
    case TextEncoding::Utf32BigEndian:
        return QStringConverter::Utf32BE;
    case TextEncoding::Utf8:
    case TextEncoding::Windows1252:
        break;
    }
    return QStringConverter::Utf8;
}

// Fills the document piece by piece, so that line ends and line lengths are counted across the pieces.
class TextFiller
{
public:
    explicit TextFiller(RichTextDocument &document) : m_cursor(&document)
    {
        document.setUndoRedoEnabled(false);
    }

    void add(QString text)
    {
        normalise(text);
        m_cursor.insertText(text);
    }

    QStringList notices() const
    {
        QStringList sentences;
        if (m_longLines > 0) {
            const QString limit = QLocale(QLocale::English).toString(longLine);
            sentences += m_longLines == 1
                ? QStringLiteral("1 line is longer than %1 characters; editing it may be slow.").arg(limit)
                : QStringLiteral("%1 lines are longer than %2 characters; editing them may be slow.")
                      .arg(m_longLines)
                      .arg(limit);
        }
        if (m_replaced > 0) {
            sentences += m_replaced == 1
                ? QStringLiteral("1 character that is no text is shown as \uFFFD.")
                : QStringLiteral("%1 characters that are no text are shown as \uFFFD.").arg(m_replaced);
        }
        return sentences;
    }

private:
    // One LF for each line end, in place: the text never grows.
    void normalise(QString &text)
    {
        QChar *to = text.data();
        for (const QChar *from = to, *end = to + text.size(); from != end; ++from) {
            const bool secondHalf = m_afterReturn && *from == QChar::LineFeed;
            m_afterReturn = *from == QChar::CarriageReturn;
            if (!secondHalf)
                *to++ = accepted(*from);
        }
        text.truncate(to - text.constData());
    }

    QChar accepted(QChar character)
    {
        constexpr char16_t beginningOfFrame = 0xFDD0;
        constexpr char16_t endOfFrame = 0xFDD1;
        switch (character.unicode()) {
        case u'\r':
        case u'\n':
        case QChar::ParagraphSeparator:
            m_lineLength = 0;
            return QChar::LineFeed;
        case QChar::Null:
        case QChar::ObjectReplacementCharacter:
        case beginningOfFrame:
        case endOfFrame:
            ++m_replaced;
            character = QChar::ReplacementCharacter;
            break;
        default:
            break;
        }
        m_longLines += ++m_lineLength == longLine + 1;
        return character;
    }

    QTextCursor m_cursor;
    qsizetype m_lineLength = 0;
    qint64 m_longLines = 0;
    qint64 m_replaced = 0;
    bool m_afterReturn = false;
};

// A decoder waits for the rest of a character that is cut off, so that nobody would see it was there.
bool endsInsideCharacter(QByteArrayView octets, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf16LittleEndian:
    case TextEncoding::Utf16BigEndian:
        return octets.size() % 2 != 0;
    case TextEncoding::Utf32LittleEndian:
    case TextEncoding::Utf32BigEndian:
        return octets.size() % 4 != 0;
    case TextEncoding::Utf8:
        return withoutCutCharacter(octets).size() < octets.size();
    case TextEncoding::Windows1252:
        break;
    }
    return false;
}

// Decodes and adds piece by piece; false when cancelled.
bool fill(TextFiller &filler, QByteArrayView octets, TextEncoding encoding, DocumentProgress &progress)
{
    QStringDecoder decoder(converterOf(encoding), QStringConverter::Flag::ConvertInitialBom);
    CodePageDecoder western;
    for (qsizetype done = 0; done < octets.size(); done += chunkSize) {
        if (progress.cancelled)
            return false;
        const QByteArrayView chunk = octets.sliced(done, std::min(chunkSize, octets.size() - done));
        filler.add(encoding == TextEncoding::Windows1252 ? western.decode(codepage::Western, chunk)
                                                         : decoder.decode(chunk));
        progress.done = done + chunk.size();
    }
    if (endsInsideCharacter(octets, encoding))
        filler.add(QString(QChar::ReplacementCharacter));
    return true;
}

} // namespace

TextEncoding detectEncoding(const QByteArray &octets, Extent extent)
{
    if (const Mark *mark = markOf(octets))
        return mark->encoding;
    // Zeros are valid UTF-8, so that unmarked UTF-16 of a western text would pass for it.
    if (const auto utf16 = unmarkedUtf16(octets))
        return *utf16;
    const QByteArrayView characters = extent == Extent::Beginning ? withoutCutCharacter(octets) : octets;
    return isStrictUtf8(characters) ? TextEncoding::Utf8 : TextEncoding::Windows1252;
}

LoadedDocument readPlainText(const QByteArray &octets, DocumentProgress &progress)
{
    if (octets.size() > maximumTextOctets) {
        throw RuntimeError(
            error::InvalidFileFormat,
            QStringLiteral("%1. The text is larger than 256 MB. Split it into smaller files first.")
                .arg(runtimeErrorText(error::InvalidFileFormat)));
    }
    progress.done = 0;
    progress.total = octets.size();
    const TextEncoding encoding = detectEncoding(octets, Extent::Whole);
    const Mark *mark = markOf(octets);
    const QByteArrayView text = QByteArrayView(octets).sliced(mark ? mark->octets.size() : 0);

    LoadedDocument loaded = {};
    loaded.kind = LoadedDocument::Kind::PlainText;
    auto document = std::make_unique<RichTextDocument>();
    TextFiller filler(*document);
    if (!fill(filler, text, encoding, progress))
        return loaded;
    document->setUndoRedoEnabled(true);
    document->setModified(false);
    loaded.document = std::move(document);
    loaded.notices = QStringList{QStringLiteral("Saving turns this file into rich text.")} + filler.notices();
    return loaded;
}

} // namespace vandrel
