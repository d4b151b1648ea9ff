// The notes of RtfParser: footnotes, endnotes and comments.
#include "controls/ListMarker.h"
#include "platform/richtext/RtfParser.h"

namespace vandrel {

/// Adds a mark to the text in the formatting that holds there; returns its format.
int RtfParser::addNoteMark(const QByteArray &word, const QString &number)
{
    QTextCharFormat format = m_formats.character(m_formats.characterFormat(group().characters));
    format.setObjectType(richtext::NoteMark);
    format.setProperty(richtext::NoteNumber, number);
    if (!word.isEmpty())
        format.setProperty(richtext::NoteWord, word);
    const int index = m_formats.addCharacterFormat(format);
    m_sink.addObject(story(), index);
    return index;
}

void RtfParser::takeNoteWord(RtfWord word)
{
    group().isFresh = false;
    if (group().isSilent || group().characters.has(RtfCharState::Deleted))
        return;
    if (word == RtfWord::Ftnalt) {
        makeEndnote();
        return;
    }
    const bool isComment = word == RtfWord::Chatn;
    const QByteArray spelling = isComment ? "\\chatn" : "\\chftn";
    if (isInNote()) {
        addNoteMark(spelling, isComment ? QString() : m_note.number);
        return;
    }
    const int next = (isComment ? m_losses.comments : m_numbers - m_endnotes) + 1;
    m_lastMark = addNoteMark(spelling, isComment ? QStringLiteral("[%1]").arg(next) : QString::number(next));
}

/// Gives the note the mark that stands right in front of it. A note without one gets a mark that shows nothing,
/// or else would be lost; the words in front are then its mark.
void RtfParser::linkNote(bool isComment)
{
    m_sink.settleHidden(story());
    const qsizetype runs = story().openRuns();
    m_note.isNumbered = m_lastMark >= 0 && runs > 0 && story().openRun(runs - 1).format == m_lastMark;
    if (!m_note.isNumbered)
        m_lastMark = addNoteMark({}, isComment ? QStringLiteral("[%1]").arg(m_losses.comments) : QString());
    m_note.mark = std::exchange(m_lastMark, -1);
    QTextCharFormat format = m_formats.character(m_note.mark);
    m_note.number = format.stringProperty(richtext::NoteNumber);
    format.setProperty(richtext::NoteId, m_note.id);
    format.setProperty(richtext::NoteOpening, QByteArray(isComment ? "{\\*\\annotation" : "{\\footnote"));
    if (isComment && !m_commentHead.isEmpty())
        format.setProperty(richtext::NoteBefore, std::exchange(m_commentHead, {}));
    m_formats.setCharacter(m_note.mark, format);
}

void RtfParser::beginNote(bool isComment)
{
    // A note within a note is part of its text.
    if (group().isSilent || isInNote())
        return;
    if (group().characters.has(RtfCharState::Deleted)) {
        group().isSilent = true;
        return;
    }
    ++(isComment ? m_losses.comments : m_losses.footnotes);
    m_note.id = m_losses.comments + m_losses.footnotes;
    linkNote(isComment);
    if (m_note.isNumbered && !isComment)
        ++m_numbers;
    group().story = &m_notes;
    group().baseDepth = 0;
    group().characters = RtfCharState();
    group().paragraph.reset();
    beginRole(Role::Note);
    if (isComment)
        addNoteMark({},
                    QStringLiteral("[%1] ").arg(m_losses.comments)
                        + (m_commentAuthor.isEmpty() ? QString() : m_commentAuthor + QStringLiteral(": ")));
    m_note.paragraphs = static_cast<qsizetype>(m_notes.paragraphs().size());
    m_note.openRuns = m_notes.openRuns();
}

/// Endnotes are counted by themselves, in small Roman numbers.
void RtfParser::makeEndnote()
{
    if (!isInNote())
        return;
    QTextCharFormat format = m_formats.character(m_note.mark);
    if (format.property(richtext::NoteOpening).toByteArray() != "{\\footnote")
        return;
    format.setProperty(richtext::NoteOpening, QByteArray("{\\footnote\\ftnalt"));
    if (m_note.isNumbered) {
        m_note.number = listNumeral(QTextListFormat::ListLowerRoman, ++m_endnotes);
        format.setProperty(richtext::NoteNumber, m_note.number);
    }
    m_formats.setCharacter(m_note.mark, format);
}

/// What stands in a note in front of its text: the date of a comment, what it refers to.
bool RtfParser::takeNoteGroup(const QByteArray &whole)
{
    const bool isInFront = isInNote() && m_notes.openRuns() == m_note.openRuns
        && static_cast<qsizetype>(m_notes.paragraphs().size()) == m_note.paragraphs;
    if (!isInFront || whole.isEmpty())
        return isInNote();
    QTextCharFormat format = m_formats.character(m_note.mark);
    const QByteArray opening = format.property(richtext::NoteOpening).toByteArray();
    format.setProperty(richtext::NoteOpening, opening + whole);
    m_formats.setCharacter(m_note.mark, format);
    return true;
}

/// A note has a paragraph, be it empty.
void RtfParser::endNote()
{
    m_sink.settleHidden(story());
    if (story().openRuns() > 0 || static_cast<qsizetype>(m_notes.paragraphs().size()) == m_note.paragraphs)
        endParagraph(paragraphDepth());
}

void RtfParser::takeAuthor(RtfWord word)
{
    const Skipped skipped = skipGroup();
    if (word == RtfWord::Atnid)
        m_commentHead.clear();
    m_commentHead.append(skipped.whole);
    if (word == RtfWord::Atnauthor)
        m_commentAuthor = rtfInstructionText(skipped.inner);
}

} // namespace vandrel
