#include "controls/ElidedLabel.h"

#include <QHelpEvent>
#include <QStylePainter>
#include <QToolTip>

namespace vandrel {

ElidedLabel::ElidedLabel(Qt::TextElideMode where, QWidget *parent) : Label(QString(), parent), m_where(where)
{
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QString ElidedLabel::shownText() const
{
    return fontMetrics().elidedText(text(), m_where, contentsRect().width());
}

bool ElidedLabel::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return Label::event(event);
    // What a server or a file system names may look like markup.
    const QString whole = shownText() == text() ? QString() : text().toHtmlEscaped();
    QToolTip::showText(static_cast<QHelpEvent *>(event)->globalPos(), whole, this);
    return true;
}

void ElidedLabel::paintEvent(QPaintEvent *)
{
    {
        QStylePainter painter(this);
        drawFrame(&painter);
        painter.drawItemText(contentsRect(),
                             static_cast<int>(alignment() & Qt::AlignHorizontal_Mask) | Qt::AlignVCenter
                                 | Qt::TextSingleLine,
                             palette(), isEnabled(), shownText(), foregroundRole());
    }
    drawFocus();
}

} // namespace vandrel
