#pragma once

#include <QHash>
#include <QSet>
#include <QTextBlock>
#include <QTextFragment>

namespace vandrel {

/// The notes of a document while it is written: which paragraphs go to which mark. A paragraph of a note whose mark
/// is gone is an ordinary one, and so is one that was moved into a table.
class RtfWriterNotes
{
public:
    /// Makes a paragraph known. In their order, before anything is written.
    void meet(const QTextBlock &block);
    /// Makes a run known that stands in that paragraph and will be written.
    void meet(const QTextFragment &fragment, const QTextBlock &block);

    /// The paragraphs that a mark stands for; none for a mark that is only a number.
    QList<QTextBlock> paragraphsAt(const QTextCharFormat &mark) const;
    /// Whether the paragraph is written with its mark.
    bool isAtMark(const QTextBlock &block) const;

private:
    static int noteOf(const QTextBlock &block);

    QHash<int, QList<QTextBlock>> m_paragraphs;
    QSet<int> m_positions; ///< of the paragraphs
    QSet<int> m_marked;
};

} // namespace vandrel
