#include "controls/RichTextNotes.h"

#include <algorithm>
#include <vector>

#include <QHash>
#include <QSet>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocumentFragment>

namespace vandrel {

namespace {

int noteOf(const QTextBlock &block)
{
    return block.blockFormat().intProperty(richtext::NoteId);
}

struct Mark {
    int position = 0;
    QTextCharFormat format;

    int note() const { return format.intProperty(richtext::NoteId); }
};

std::vector<Mark> marksOf(const QTextDocument &document)
{
    std::vector<Mark> marks;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            const QTextFragment fragment = it.fragment();
            const QTextCharFormat format = fragment.charFormat();
            if (format.objectType() == richtext::NoteMark && format.hasProperty(richtext::NoteId))
                marks.push_back({fragment.position(), format});
        }
    }
    return marks;
}

QHash<int, QString> textsOf(const QTextDocument &document)
{
    QHash<int, QString> texts;
    for (QTextBlock block = document.begin(); block.isValid(); block = block.next()) {
        if (const int note = noteOf(block); note > 0)
            texts[note] += block.text() + QChar::ParagraphSeparator;
    }
    return texts;
}

/// Finds a note of the target for each note of the part.
class NoteNumbers
{
public:
    explicit NoteNumbers(const QTextDocument &target) : m_lost(textsOf(target))
    {
        for (auto it = m_lost.keyBegin(); it != m_lost.keyEnd(); ++it)
            m_highest = std::max(m_highest, *it);
        for (const Mark &mark : marksOf(target)) {
            m_lost.remove(mark.note());
            m_highest = std::max(m_highest, mark.note());
        }
    }

    void enter(int note, const QString &text)
    {
        const int lost = m_lost.key(text);
        m_lost.remove(lost);
        m_numbers[note] = lost > 0 ? lost : ++m_highest;
        if (lost > 0)
            m_known.insert(note);
    }

    int numberOf(int note) const { return m_numbers.value(note); }
    /// Whether the target has the note's paragraphs.
    bool isKnown(int note) const { return m_known.contains(note); }

private:
    QHash<int, QString> m_lost;
    QHash<int, int> m_numbers;
    QSet<int> m_known;
    int m_highest = 0;
};

void renumberMarks(QTextDocument &part, const NoteNumbers &numbers)
{
    for (Mark &mark : marksOf(part)) {
        mark.format.setProperty(richtext::NoteId, numbers.numberOf(mark.note()));
        QTextCursor cursor(&part);
        cursor.setPosition(mark.position);
        cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
        cursor.setCharFormat(mark.format);
    }
}

void append(QTextCursor &cursor, const QTextBlock &block, int note)
{
    QTextBlockFormat format = block.blockFormat();
    format.setProperty(richtext::NoteId, note);
    format.clearProperty(QTextFormat::ObjectIndex);
    cursor.insertBlock(format, block.charFormat());
    QTextCursor paragraph(block);
    paragraph.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
    cursor.insertFragment(paragraph.selection());
}

// Takes the paragraphs from `first` on away, with the break in front of them.
void removeFrom(const QTextBlock &first)
{
    const QTextBlockFormat last = first.previous().blockFormat();
    const QTextCharFormat mark = first.previous().charFormat();
    QTextCursor cursor(first);
    cursor.movePosition(QTextCursor::PreviousCharacter);
    cursor.movePosition(QTextCursor::End, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
    cursor.setBlockFormat(last);
    cursor.setBlockCharFormat(mark);
}

QTextBlock firstNote(const QTextDocument &part)
{
    QTextBlock first;
    for (QTextBlock block = part.lastBlock(); noteOf(block) > 0 && block.previous().isValid();
         block = block.previous())
        first = block;
    return first;
}

} // namespace

std::unique_ptr<QTextDocument> takeNotes(RichTextDocument &part, const QTextDocument &target)
{
    const QTextBlock first = firstNote(part);
    if (!first.isValid())
        return {};
    NoteNumbers numbers(target);
    const QHash<int, QString> texts = textsOf(part);
    for (auto it = texts.cbegin(); it != texts.cend(); ++it)
        numbers.enter(it.key(), it.value());
    renumberMarks(part, numbers);
    auto notes = std::make_unique<QTextDocument>();
    QTextCursor end(notes.get());
    for (QTextBlock block = first; block.isValid(); block = block.next()) {
        if (!numbers.isKnown(noteOf(block)))
            append(end, block, numbers.numberOf(noteOf(block)));
    }
    removeFrom(first);
    return notes;
}

} // namespace vandrel
