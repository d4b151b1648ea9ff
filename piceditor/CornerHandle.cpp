#include "piceditor/CornerHandle.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPainter>

#include "controls/ControlDrag.h"
#include "runtime/Events.h"

namespace vandrel {

CornerHandle::CornerHandle(QWidget *parent) : QPushButton(parent)
{
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::SizeFDiagCursor);
}

void CornerHandle::mousePressEvent(QMouseEvent *event)
{
    m_pressedAt = event->pos();
}

void CornerHandle::mouseMoveEvent(QMouseEvent *event)
{
    const bool isFarEnough
        = (event->pos() - m_pressedAt).manhattanLength() >= QApplication::startDragDistance();
    if (event->buttons().testFlag(Qt::LeftButton) && isFarEnough)
        guarded([this] { dragControl(this); });
}

// The stripes of a handle over the button's own look.
void CornerHandle::paintEvent(QPaintEvent *event)
{
    QPushButton::paintEvent(event);
    guarded([this] {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(palette().color(QPalette::ButtonText), 1.2));
        const double side = std::min(width(), height());
        for (const double share : {0.35, 0.55, 0.75})
            painter.drawLine(QPointF(side * share, side * 0.8), QPointF(side * 0.8, side * share));
    });
}

} // namespace vandrel
