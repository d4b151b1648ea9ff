#include "controls/TextBox.h"

#include <algorithm>

#include <QKeyEvent>
#include <QScrollBar>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

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

// Where `count` characters of a document end in a text that has CR LF for each of its line breaks.
qsizetype endOf(QStringView text, qsizetype from, qsizetype count)
{
    qsizetype end = from;
    for (; count > 0 && end < text.size(); --count)
        end += text[end] == u'\r' ? 2 : 1;
    return end;
}

} // namespace

TextBox::TextBox(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    connect(document(), &QTextDocument::contentsChange, this,
            [this](int position, int removed) { follow(position, removed); });
    connect(this, &QPlainTextEdit::textChanged, this, &TextBox::Change);
}

void TextBox::setText(const QString &text)
{
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    setPlainText(text);
}

void TextBox::append(const QString &text)
{
    QScrollBar *bar = verticalScrollBar();
    const bool showedEnd = bar->value() == bar->maximum();
    QTextCursor end(document());
    end.movePosition(QTextCursor::End);
    end.insertText(text);
    if (showedEnd)
        bar->setValue(bar->maximum());
}

// A line break within a paragraph would be a character of its own in the text.
void TextBox::keyPressEvent(QKeyEvent *event)
{
    if (!event->matches(QKeySequence::InsertLineSeparator)) {
        QPlainTextEdit::keyPressEvent(event);
        return;
    }
    QKeyEvent plain(event->type(), event->key(), Qt::NoModifier, QStringLiteral("\r"));
    QPlainTextEdit::keyPressEvent(&plain);
    event->setAccepted(plain.isAccepted());
}

// The document tells how many characters went, and at times counts the mark behind its last paragraph, which is none
// of them. How many came follows from its length.
void TextBox::follow(qsizetype position, qsizetype removed)
{
    const qsizetype length = document()->characterCount() - 1;
    qsizetype gone = std::min(removed, m_length - position);
    qsizetype come = length - (m_length - gone);
    if (gone < 0 || come < 0) {
        position = 0;
        gone = m_length;
        come = length;
    }
    const qsizetype begin = position + document()->findBlock(static_cast<int>(position)).blockNumber();
    const qsizetype end = endOf(m_text, begin, gone);
    const QString added = documentText(position, come);
    m_text.remove(begin, end - begin);
    m_text.insert(begin, added);
    m_length = length;
    if (hasLongWord(added))
        setWordWrapMode(QTextOption::WrapAnywhere);
}

QString TextBox::documentText(qsizetype position, qsizetype count) const
{
    QTextCursor part(document());
    part.setPosition(static_cast<int>(position));
    part.setPosition(static_cast<int>(position + count), QTextCursor::KeepAnchor);
    const QString raw = part.selectedText();
    QString text;
    text.reserve(raw.size());
    qsizetype begin = 0;
    for (qsizetype end = raw.indexOf(QChar::ParagraphSeparator); end != -1;
         end = raw.indexOf(QChar::ParagraphSeparator, begin)) {
        text.append(QStringView(raw).sliced(begin, end - begin)).append(u"\r\n");
        begin = end + 1;
    }
    return text.append(QStringView(raw).sliced(begin));
}

} // namespace vandrel
