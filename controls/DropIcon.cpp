#include "controls/DropIcon.h"

#include <utility>

#include <QDragEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPointer>

#include "controls/ControlDrag.h"
#include "runtime/EventGate.h"

namespace vandrel {

namespace {

constexpr int iconSide = 48;
constexpr double cornerRadius = 6;
constexpr double ringWidth = 2;
constexpr float glow = 0.35F;

} // namespace

DropIcon::DropIcon(QIcon icon, Qt::DropAction action, QWidget *parent)
    : QToolButton(parent), m_icon(std::move(icon)), m_action(action)
{
    setAutoRaise(true);
    setAcceptDrops(true);
    setFocusPolicy(Qt::StrongFocus);
    setIconSize({iconSide, iconSide});
    setIcon(m_icon);
}

void DropIcon::setFaint(bool faint)
{
    setIcon(faint ? QIcon(m_icon.pixmap(iconSize(), devicePixelRatioF(), QIcon::Disabled)) : m_icon);
}

void DropIcon::mousePressEvent(QMouseEvent *event)
{
    event->accept();
}

void DropIcon::mouseReleaseEvent(QMouseEvent *event)
{
    event->accept();
    Q_EMIT MouseUp();
}

void DropIcon::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    if (event->button() == Qt::LeftButton)
        Q_EMIT DblClick();
}

void DropIcon::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)
        Q_EMIT DblClick();
    else
        QToolButton::keyPressEvent(event);
}

// What another window or another program drags is none of this one's business.
bool DropIcon::take(QDropEvent *event) const
{
    const auto *source = qobject_cast<QWidget *>(draggedControl(*event));
    const bool isOurs = source && source->window() == window();
    event->setAccepted(isOurs);
    if (isOurs)
        event->setDropAction(m_action);
    return isOurs;
}

void DropIcon::setLit(bool lit)
{
    m_isLit = lit;
    update();
}

void DropIcon::dragEnterEvent(QDragEnterEvent *event)
{
    setLit(take(event));
}

void DropIcon::dragMoveEvent(QDragMoveEvent *event)
{
    take(event);
}

void DropIcon::dragLeaveEvent(QDragLeaveEvent *)
{
    setLit(false);
}

// A handler may open a box, which must not happen inside the system's drag.
void DropIcon::dropEvent(QDropEvent *event)
{
    setLit(false);
    if (!take(event))
        return;
    EventGate::raise(this, [this, source = QPointer<QObject>(event->source())] {
        if (source)
            Q_EMIT DragDrop(source);
    });
}

void DropIcon::paintEvent(QPaintEvent *event)
{
    QToolButton::paintEvent(event);
    if (!m_isLit)
        return;
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor fill = palette().color(QPalette::Highlight);
    painter.setPen(QPen(fill, ringWidth));
    fill.setAlphaF(glow);
    painter.setBrush(fill);
    const double inset = ringWidth / 2;
    painter.drawRoundedRect(QRectF(rect()).adjusted(inset, inset, -inset, -inset), cornerRadius,
                            cornerRadius);
}

} // namespace vandrel
