#include "controls/DividedParagraphs.h"

#include <algorithm>

#include <QTextBoundaryFinder>
#include <QTextCharFormat>
#include <QTextDocument>

namespace vandrel {

namespace {

// A longer paragraph is divided.
constexpr qsizetype longestPiece = 8192;
// What is cut off it at a time, at most.
constexpr qsizetype usualPiece = 4096;
// Two pieces that are together no longer than this, or of which one is shorter than that, become one again.
constexpr qsizetype shortPair = 6144;
constexpr qsizetype shortPiece = 128;
// A cut is rather made behind a blank, if there is one in so many characters before it.
constexpr qsizetype blankWithin = 256;

constexpr int divisionProperty = QTextFormat::UserProperty + 1;

QTextCharFormat divisionFormat()
{
    QTextCharFormat format;
    format.setProperty(divisionProperty, true);
    return format;
}

bool endsParagraph(QChar character)
{
    return character == QChar::LineFeed || character == QChar::CarriageReturn
        || character == QChar::ParagraphSeparator;
}

// Where to cut a text that is longer than a piece: behind a blank, else between two letters as a reader sees them.
qsizetype cutOf(QStringView text)
{
    const qsizetype blank = text.first(usualPiece).lastIndexOf(u' ');
    if (blank >= usualPiece - blankWithin)
        return blank + 1;
    const QString around = text.sliced(usualPiece - blankWithin, 2 * blankWithin).toString();
    QTextBoundaryFinder letters(QTextBoundaryFinder::Grapheme, around);
    letters.setPosition(blankWithin);
    if (!letters.isAtBoundary())
        letters.toPreviousBoundary();
    const qsizetype cut = std::max<qsizetype>(0, letters.position());
    // A letter with hundreds of marks is cut through, but not a pair of surrogates.
    if (cut > 0)
        return usualPiece - blankWithin + cut;
    return text.at(usualPiece).isLowSurrogate() ? usualPiece - 1 : usualPiece;
}

// Makes changes that belong to the change before them, and begins with the first of them.
class Tidier
{
public:
    explicit Tidier(QTextDocument &document) : m_cursor(&document) { }
    ~Tidier()
    {
        if (m_hasBegun)
            m_cursor.endEditBlock();
    }
    Tidier(const Tidier &) = delete;
    Tidier &operator=(const Tidier &) = delete;

    void divide(QTextBlock block)
    {
        while (block.length() - 1 > longestPiece) {
            at(block.position() + static_cast<int>(cutOf(block.text())));
            m_cursor.insertBlock(QTextBlockFormat(), divisionFormat());
            block = m_cursor.block();
        }
    }

    bool hasBegun() const { return m_hasBegun; }

    void joinWithNext(const QTextBlock &block)
    {
        at(block.position() + block.length() - 1);
        m_cursor.deleteChar();
    }

private:
    void at(int position)
    {
        if (!m_hasBegun)
            m_cursor.joinPreviousEditBlock();
        m_hasBegun = true;
        m_cursor.setPosition(position);
    }

    QTextCursor m_cursor;
    bool m_hasBegun = false;
};

// Also says so of two blocks that are longer by up to `spare` characters than the two that have to be one.
bool shouldBeJoined(const QTextBlock &block, const QTextBlock &next, qsizetype spare = 0)
{
    if (!block.isValid() || !next.isValid() || !continuesParagraph(next))
        return false;
    const qsizetype one = block.length() - 1;
    const qsizetype other = next.length() - 1;
    return one + other <= shortPair + spare || std::min(one, other) < shortPiece + spare;
}

} // namespace

// The format of the paragraph end before it, which is where the mark is: it goes with that character and with no other.
bool continuesParagraph(const QTextBlock &block)
{
    return block.charFormat().boolProperty(divisionProperty) && block.blockNumber() > 0;
}

bool hasLongParagraph(QStringView text)
{
    qsizetype length = 0;
    return std::any_of(text.begin(), text.end(), [&length](QChar character) {
        length = endsParagraph(character) ? 0 : length + 1;
        return length > longestPiece;
    });
}

void insertDivided(QTextCursor cursor, QStringView text)
{
    cursor.beginEditBlock();
    cursor.removeSelectedText();
    qsizetype begin = 0;
    qsizetype pieceBegin = 0;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (endsParagraph(text[i]))
            pieceBegin = i + 1;
        if (i - pieceBegin < longestPiece)
            continue;
        pieceBegin += cutOf(text.sliced(pieceBegin, longestPiece));
        cursor.insertText(text.sliced(begin, pieceBegin - begin).toString(), QTextCharFormat());
        cursor.insertBlock(QTextBlockFormat(), divisionFormat());
        begin = pieceBegin;
    }
    cursor.insertText(text.sliced(begin).toString(), QTextCharFormat());
    cursor.endEditBlock();
}

bool tidyDivisions(QTextDocument &document, int position, int count)
{
    Tidier tidier(document);
    QTextBlock block = document.findBlock(position);
    if (block.previous().isValid())
        block = block.previous();
    QTextBlock last = document.findBlock(position + count);
    while (block.isValid()) {
        if (const QTextBlock next = block.next(); shouldBeJoined(block, next)) {
            if (next == last)
                last = block;
            tidier.joinWithNext(block);
            continue;
        }
        const QTextBlock next = block.next();
        const bool isLast = block == last;
        tidier.divide(block);
        if (isLast)
            break;
        block = next;
    }
    return tidier.hasBegun();
}

bool isAtBoundOfDivision(const QTextBlock &block)
{
    // A letter beyond the first plane is two characters.
    constexpr qsizetype letter = 2;
    return block.length() - 1 + letter > longestPiece || shouldBeJoined(block.previous(), block, letter)
        || shouldBeJoined(block, block.next(), letter);
}

QString dividedText(const QTextDocument &document, int position, int count)
{
    const int end = position + count;
    QTextBlock block = document.findBlock(position);
    QString text;
    text.reserve(count);
    while (block.isValid()) {
        const int from = std::max(position, block.position()) - block.position();
        const int to = std::min(end, block.position() + block.length() - 1) - block.position();
        text.append(QStringView(block.text()).sliced(from, std::max(0, to - from)));
        const bool endsWithin = end >= block.position() + block.length();
        block = block.next();
        if (!endsWithin || !block.isValid())
            break;
        if (!continuesParagraph(block))
            text.append(u"\r\n");
    }
    return text;
}

qsizetype dividedTextBefore(const QTextDocument &document, int position)
{
    const QTextBlock at = document.findBlock(position);
    if (!at.isValid())
        return 0;
    qsizetype divisions = 0;
    for (QTextBlock block = at; block.isValid(); block = block.previous())
        divisions += continuesParagraph(block) ? 1 : 0;
    return position + at.blockNumber() - 2 * divisions;
}

} // namespace vandrel
