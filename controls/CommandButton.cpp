#include "controls/CommandButton.h"

#include <QRegularExpression>
#include <QStyleOptionButton>
#include <QStylePainter>

namespace vandrel {

CommandButton::CommandButton(const QString &caption, QWidget *parent) : QPushButton(caption, parent)
{
    setAutoDefault(true);
    // A row of buttons is of one height, whoever of them has two lines.
    setSizePolicy(QSizePolicy::Minimum, QSizePolicy::Preferred);
}

QString CommandButton::shownCaption() const
{
    static const QRegularExpression gap(QStringLiteral(" {2,}"));
    return text().trimmed().replace(gap, QStringLiteral("\n"));
}

QSize CommandButton::sizeHint() const
{
    ensurePolished();
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text = shownCaption();
    const QSize contents = fontMetrics().size(Qt::TextShowMnemonic, option.text);
    return style()->sizeFromContents(QStyle::CT_PushButton, &option, contents, this);
}

void CommandButton::paintEvent(QPaintEvent *)
{
    QStylePainter painter(this);
    QStyleOptionButton option;
    initStyleOption(&option);
    option.text.clear();
    painter.drawControl(QStyle::CE_PushButton, option);
    option.rect = style()->subElementRect(QStyle::SE_PushButtonContents, &option, this);
    painter.drawItemText(option.rect, Qt::AlignCenter | Qt::TextShowMnemonic, option.palette, isEnabled(),
                         shownCaption(), QPalette::ButtonText);
}

} // namespace vandrel
