#include "controls/TextBox.h"

#include <algorithm>

#include <QKeyEvent>
#include <QMimeData>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

#include "controls/DividedParagraphs.h"

namespace vandrel {

namespace {

constexpr qsizetype longestWord = 4000;

bool hasLongWord(QStringView text)
{
    qsizetype length = 0;
    return std::any_of(text.begin(), text.end(), [&length](QChar character) {
        length = character.isSpace() ? 0 : length + 1;
        return length > longestWord;
    });
}

} // namespace

TextBox::TextBox(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int position, int removed) { follow(position, removed); });
    connect(this, &QPlainTextEdit::textChanged, this, &TextBox::changed);
}

void TextBox::setText(const QString &text)
{
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    m_mayBeDivided = hasLongParagraph(text);
    if (!m_mayBeDivided) {
        setPlainText(text);
        return;
    }
    // As for any other text, there is nothing to undo.
    document()->setUndoRedoEnabled(false);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    insertDivided(all, text);
    document()->setUndoRedoEnabled(true);
    moveCursor(QTextCursor::Start);
}

void TextBox::append(const QString &text)
{
    QScrollBar *bar = verticalScrollBar();
    const bool showedEnd = bar->value() == bar->maximum();
    m_mayBeDivided = m_mayBeDivided || hasLongParagraph(text);
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    insertDivided(end, text);
    if (showedEnd)
        bar->setValue(bar->maximum());
}

// A line break is a paragraph's end here, with Shift as well: one within a paragraph would be a character of its own.
void TextBox::keyPressEvent(QKeyEvent *event)
{
    const bool breaksLine = event->matches(QKeySequence::InsertParagraphSeparator)
        || event->matches(QKeySequence::InsertLineSeparator);
    if (breaksLine && !isReadOnly()) {
        insertPlain(textCursor(), QStringLiteral("\n"));
        ensureCursorVisible();
        event->accept();
        return;
    }
    stepOverDivision(event->key());
    if (editAtBound(*event)) {
        ensureCursorVisible();
        event->accept();
    } else {
        QPlainTextEdit::keyPressEvent(event);
    }
}

// Does what a key does to the text by one letter or paragraph end, where that may put the divisions out of order: as an
// edit block, to which what puts them in order can belong, so that both are undone together. False for any other key.
bool TextBox::editAtBound(const QKeyEvent &event)
{
    QTextCursor caret = textCursor();
    if (isReadOnly() || caret.hasSelection()
        || (event.modifiers() & ~(Qt::ShiftModifier | Qt::KeypadModifier)) != 0)
        return false;
    const bool isPlain = (event.modifiers() & Qt::ShiftModifier) == 0;
    const bool deletesBefore = event.key() == Qt::Key_Backspace && isPlain;
    const bool deletesBehind = event.key() == Qt::Key_Delete && isPlain;
    const bool types = !event.text().isEmpty() && event.text().front().isPrint();
    const bool joins = (deletesBefore && caret.atBlockStart()) || (deletesBehind && caret.atBlockEnd());
    if (!(types || deletesBefore || deletesBehind) || !(joins || isAtBoundOfDivision(caret.block())))
        return false;
    if (types) {
        insertPlain(caret, event.text());
        return true;
    }
    caret.beginEditBlock();
    if (deletesBefore)
        caret.deletePreviousChar();
    else
        caret.deleteChar();
    caret.endEditBlock();
    return true;
}

void TextBox::insertPlain(const QTextCursor &place, QStringView text)
{
    m_mayBeDivided = m_mayBeDivided || hasLongParagraph(text);
    insertDivided(place, text);
}

// What a key deletes is the text before or behind the caret, not the division there.
void TextBox::stepOverDivision(int key)
{
    QTextCursor caret = textCursor();
    if (!m_mayBeDivided || isReadOnly() || caret.hasSelection())
        return;
    const QTextBlock block = caret.block();
    if (key == Qt::Key_Backspace && caret.atBlockStart() && continuesParagraph(block))
        caret.movePosition(QTextCursor::PreviousCharacter);
    else if (key == Qt::Key_Delete && caret.atBlockEnd() && continuesParagraph(block.next()))
        caret.movePosition(QTextCursor::NextCharacter);
    else
        return;
    setTextCursor(caret);
}

QMimeData *TextBox::createMimeDataFromSelection() const
{
    const QTextCursor selection = textCursor();
    const int begin = selection.selectionStart();
    auto *copied = new QMimeData;
    copied->setText(dividedText(*document(), begin, selection.selectionEnd() - begin)
                        .replace(QStringLiteral("\r\n"), QStringLiteral("\n")));
    return copied;
}

void TextBox::insertFromMimeData(const QMimeData *source)
{
    if (isReadOnly())
        return;
    insertPlain(textCursor(), source->text());
    ensureCursorVisible();
}

// What lies before the position has not changed, nor has what follows the characters that have come. How many they are
// follows from the length: the document tells how many went, but at times counts the mark behind its last paragraph,
// which is none of them.
void TextBox::follow(qsizetype position, qsizetype removed)
{
    const qsizetype length = document()->characterCount() - 1;
    const qsizetype gone = std::min(removed, m_length - position);
    qsizetype come = length - (m_length - gone);
    m_length = length;
    if (m_isTidying)
        return;
    if (gone < 0 || come < 0) {
        position = 0;
        come = length;
    }
    m_changedAt = static_cast<int>(position);
    m_changedCount = static_cast<int>(come);
    const qsizetype begin = textBefore(position);
    const qsizetype behind = textBefore(length) - textBefore(position + come);
    const QString added = dividedText(*document(), m_changedAt, m_changedCount);
    m_text.replace(begin, m_text.size() - behind - begin, added);
    if (hasLongWord(added))
        setWordWrapMode(QTextOption::WrapAnywhere);
}

qsizetype TextBox::textBefore(qsizetype position) const
{
    const auto at = static_cast<int>(position);
    if (m_mayBeDivided)
        return dividedTextBefore(*document(), at);
    return position + document()->findBlock(at).blockNumber();
}

// Nothing is put in order behind an undone change: it is in the order that it was in, and may be done again.
void TextBox::changed()
{
    if (m_isTidying)
        return;
    if (!document()->isRedoAvailable()) {
        m_isTidying = true;
        m_mayBeDivided = tidyDivisions(*document(), m_changedAt, m_changedCount) || m_mayBeDivided;
        m_isTidying = false;
    }
    Q_EMIT Change();
}

} // namespace vandrel
