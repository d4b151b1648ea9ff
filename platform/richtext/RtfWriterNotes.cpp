#include "platform/richtext/RtfWriterNotes.h"

#include <QTextCursor>
#include <QTextDocument>
#include <QTextFrame>

#include "controls/RichTextDocument.h"

namespace vandrel {

int RtfWriterNotes::noteOf(const QTextBlock &block)
{
    return block.blockFormat().intProperty(richtext::NoteId);
}

void RtfWriterNotes::meet(const QTextBlock &block)
{
    const int note = noteOf(block);
    if (note == 0 || QTextCursor(block).currentFrame() != block.document()->rootFrame())
        return;
    m_paragraphs[note].append(block);
    m_positions.insert(block.position());
}

// A mark inside a note is only a number, so that no note can stand in itself.
void RtfWriterNotes::meet(const QTextFragment &fragment, const QTextBlock &block)
{
    const QTextCharFormat format = fragment.charFormat();
    if (format.objectType() == richtext::NoteMark && noteOf(block) == 0)
        m_marked.insert(format.intProperty(richtext::NoteId));
}

QList<QTextBlock> RtfWriterNotes::paragraphsAt(const QTextCharFormat &mark) const
{
    const int note = mark.intProperty(richtext::NoteId);
    return m_marked.contains(note) ? m_paragraphs.value(note) : QList<QTextBlock>();
}

bool RtfWriterNotes::isAtMark(const QTextBlock &block) const
{
    return m_positions.contains(block.position()) && m_marked.contains(noteOf(block));
}

} // namespace vandrel
