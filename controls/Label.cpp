#include "controls/Label.h"

#include <utility>

#include <QKeyEvent>
#include <QMouseEvent>
#include <QStyleOptionFocusRect>
#include <QStylePainter>

#include "controls/RgbLong.h"

namespace vandrel {

Label::Label(const QString &caption, QWidget *parent) : QLabel(caption, parent)
{
    setTextFormat(Qt::PlainText);
}

void Label::setForeColor(qint32 rgbLong)
{
    m_foreColor = rgbLong;
    QPalette colors = palette();
    colors.setColor(foregroundRole(), colorOf(rgbLong));
    setPalette(colors);
}

void Label::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_press = Press::Single;
    else
        QLabel::mousePressEvent(event);
}

void Label::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        m_press = Press::Double;
    else
        QLabel::mouseDoubleClickEvent(event);
}

void Label::mouseReleaseEvent(QMouseEvent *event)
{
    Q_EMIT MouseUp();
    if (event->button() != Qt::LeftButton) {
        QLabel::mouseReleaseEvent(event);
        return;
    }
    const Press press = std::exchange(m_press, Press::None);
    if (!rect().contains(event->position().toPoint()))
        return;
    if (press == Press::Single)
        Q_EMIT Click();
    else if (press == Press::Double)
        Q_EMIT DblClick();
}

void Label::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Space:
        Q_EMIT Click();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        Q_EMIT Click();
        Q_EMIT DblClick();
        break;
    default:
        QLabel::keyPressEvent(event);
    }
}

void Label::focusInEvent(QFocusEvent *event)
{
    QLabel::focusInEvent(event);
    update();
}

void Label::focusOutEvent(QFocusEvent *event)
{
    QLabel::focusOutEvent(event);
    update();
}

void Label::paintEvent(QPaintEvent *event)
{
    QLabel::paintEvent(event);
    drawFocus();
}

void Label::drawFocus()
{
    if (!hasFocus())
        return;
    QStylePainter painter(this);
    QStyleOptionFocusRect option;
    option.initFrom(this);
    painter.drawPrimitive(QStyle::PE_FrameFocusRect, option);
}

} // namespace vandrel
