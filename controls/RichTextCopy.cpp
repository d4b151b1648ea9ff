#include "controls/RichTextCopy.h"

#include <algorithm>

#include <QTextBlock>
#include <QTextDocumentFragment>
#include <QTextFrame>
#include <QTextList>

namespace vandrel {

namespace {

// A piece takes some ten milliseconds.
constexpr int charactersInPiece = 16'384;

} // namespace

RichTextCopy::RichTextCopy(const QTextCursor &selection, QTextDocument &copy)
    : m_original(*selection.document()), m_copy(copy), m_selection(selection)
{
    m_copy.setUndoRedoEnabled(false);
    m_copy.setDefaultFont(m_original.defaultFont());
    m_copy.setDefaultTextOption(m_original.defaultTextOption());
    m_copy.setIndentWidth(m_original.indentWidth());
    if (!m_selection.hasSelection())
        m_selection.select(QTextCursor::Document);
    m_start = m_selection.selectionStart();
    m_end = m_selection.selectionEnd();
    m_position = m_start;
}

double RichTextCopy::progress() const
{
    return m_end > m_start ? static_cast<double>(m_position - m_start) / (m_end - m_start) : 1;
}

// A piece ends in front of a paragraph, and never inside a table.
int RichTextCopy::endOfPiece() const
{
    if (m_selection.hasComplexSelection() || m_end - m_position <= charactersInPiece)
        return m_end;
    const QTextBlock block = m_original.findBlock(m_position + charactersInPiece);
    int end = block.position();
    for (const QTextFrame *frame : m_original.rootFrame()->childFrames()) {
        if (frame->firstPosition() <= end && end <= frame->lastPosition())
            end = frame->lastPosition() + 1;
    }
    if (end <= m_position)
        end = block.position() + block.length();
    return std::min(end, m_end);
}

bool RichTextCopy::step()
{
    const int end = endOfPiece();
    QTextCursor piece = m_selection;
    if (!m_selection.hasComplexSelection()) {
        piece.setPosition(m_position);
        piece.setPosition(end, QTextCursor::KeepAnchor);
    }
    QTextCursor target(&m_copy);
    target.movePosition(QTextCursor::End);
    const int copiedFrom = target.position();
    target.insertFragment(QTextDocumentFragment(piece));
    joinLists(m_position, end, copiedFrom);
    m_position = end;
    return m_position < m_end;
}

// Each piece brings lists of its own; those that stand for the same list become one.
void RichTextCopy::joinLists(int from, int to, int copiedFrom)
{
    if (m_selection.hasComplexSelection())
        return;
    QTextBlock copied = m_copy.findBlock(copiedFrom);
    for (QTextBlock block = m_original.findBlock(from);
         block.isValid() && block.position() < to && copied.isValid();
         block = block.next(), copied = copied.next()) {
        QTextList *list = block.textList();
        QTextList *its = copied.textList();
        if (!list || !its)
            continue;
        const auto known = m_lists.constFind(list);
        if (known == m_lists.constEnd())
            m_lists.insert(list, its);
        else if (*known != its)
            (*known)->add(copied);
    }
}

} // namespace vandrel
