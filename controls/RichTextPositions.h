#pragma once

#include <QString>
#include <QTextDocument>

namespace vandrel {

/// The arithmetic between a document's own positions and the positions of the text that the rich-text box
/// shows to its users.
///
/// In the document every paragraph end is one character, and the borders of table cells and frames are
/// paragraph ends of a special kind. In the text every one of them is CR LF and counts two; no border is ever
/// seen as a character. So a text position is the document position plus the number of paragraphs before it.
/// Everything else is one for one: a line break inside a paragraph is LF, an embedded object is a blank.
///
/// All functions take a position outside the document as the nearest end of it. Those that give no text take
/// O(log n) or, for a text position, O(log² n) steps; the others as many as there is text.
class RichTextPositions
{
public:
    /// Which way a text position inside a CR LF pair or a surrogate pair is taken.
    enum class Inside { Before, Behind };

    explicit RichTextPositions(const QTextDocument &document) : m_document(document) { }

    /// The length of the whole text.
    qint32 length() const;
    /// The text position of a document position.
    qint32 toText(int documentPosition) const;
    /// The document position of a text position.
    int toDocument(qint32 textPosition, Inside inside = Inside::Before) const;
    /// The document position, moved out of the middle of a surrogate pair.
    int outsidePair(int documentPosition, Inside inside = Inside::Before) const;
    /// The text between two document positions, with `lineBreak` for every paragraph end.
    QString text(int from, int to, QStringView lineBreak = u"\r\n") const;
    /// The characters between two document positions, one for one: paragraph separators for paragraph ends and
    /// borders, LF for line breaks, blanks for objects.
    QString characters(int from, int to) const;

private:
    const QTextDocument &m_document;
};

} // namespace vandrel
