#include "controls/TextBox.h"

#include <QScrollBar>
#include <QTextCursor>
#include <QTextDocument>

namespace vandrel {

namespace {

bool isLineBreak(QChar character)
{
    return character == QChar::ParagraphSeparator || character == QChar::LineSeparator || character == u'\n'
        || character == u'\r';
}

} // namespace

TextBox::TextBox(QWidget *parent) : QPlainTextEdit(parent)
{
    setTabChangesFocus(true);
    connect(this, &QPlainTextEdit::textChanged, this, &TextBox::Change);
}

// The toolkit's own conversion would turn no-break spaces into blanks.
QString TextBox::text() const
{
    const QString raw = document()->toRawText();
    QString result;
    result.reserve(raw.size() + blockCount());
    qsizetype begin = 0;
    for (qsizetype at = 0; at < raw.size(); ++at) {
        if (!isLineBreak(raw[at]))
            continue;
        result.append(QStringView(raw).sliced(begin, at - begin)).append(u"\r\n");
        begin = at + 1;
    }
    return result.append(QStringView(raw).sliced(begin));
}

void TextBox::setText(const QString &text)
{
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

} // namespace vandrel
