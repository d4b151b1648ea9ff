#include "controls/PictureBox.h"

#include <QDragEnterEvent>
#include <QDropEvent>
#include <QMouseEvent>
#include <QPaintEvent>
#include <QPainter>

#include "controls/ControlDrag.h"
#include "runtime/Events.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

int buttonsOf(Qt::MouseButtons buttons)
{
    return (buttons.testFlag(Qt::LeftButton) ? 1 : 0) | (buttons.testFlag(Qt::RightButton) ? 2 : 0)
        | (buttons.testFlag(Qt::MiddleButton) ? 4 : 0);
}

int keysOf(Qt::KeyboardModifiers keys)
{
    return (keys.testFlag(Qt::ShiftModifier) ? 1 : 0) | (keys.testFlag(Qt::ControlModifier) ? 2 : 0)
        | (keys.testFlag(Qt::AltModifier) ? 4 : 0);
}

} // namespace

PictureBox::PictureBox(QWidget *parent) : QFrame(parent)
{
    setMouseTracking(true);
}

double PictureBox::inUnits(double pixels) const
{
    return m_scaleMode == Twips ? pixels * twipsPerPixel : pixels;
}

void PictureBox::setPicture(const SharedPicture &picture)
{
    m_picture = picture;
    show(picture, {});
}

void PictureBox::PaintPicture(const SharedPicture &picture, qint32 x, qint32 y)
{
    show(picture, {x, y});
}

void PictureBox::Cls()
{
    show(m_picture, {});
}

void PictureBox::show(const SharedPicture &picture, QPoint origin)
{
    disconnect(m_refining);
    m_shown = picture;
    m_origin = origin;
    if (const PicturePixels *pixels = picture.pixels().get())
        m_refining = onEvent(pixels, &PicturePixels::refined, this, [this] { update(); });
    update();
}

void PictureBox::paintEvent(QPaintEvent *event)
{
    guarded([&] {
        if (const PicturePixels *pixels = m_shown.pixels().get()) {
            const QRect inside = contentsRect();
            const QPoint toPicture = m_origin - inside.topLeft();
            const QRect part = (event->rect() & inside).translated(toPicture) & QRect({}, pixels->size());
            QPainter painter(this);
            if (!part.isEmpty())
                pixels->paint(painter, part.translated(-toPicture), part);
        }
    });
    QFrame::paintEvent(event);
}

QPointF PictureBox::positionOf(const QPointF &inWidget) const
{
    const QPointF inside = inWidget - contentsRect().topLeft();
    return {inUnits(inside.x()), inUnits(inside.y())};
}

void PictureBox::mousePressEvent(QMouseEvent *event)
{
    const QPointF at = positionOf(event->position());
    Q_EMIT MouseDown(buttonsOf(event->button()), keysOf(event->modifiers()), static_cast<float>(at.x()),
                     static_cast<float>(at.y()));
}

void PictureBox::mouseMoveEvent(QMouseEvent *event)
{
    const QPointF at = positionOf(event->position());
    Q_EMIT MouseMove(buttonsOf(event->buttons()), keysOf(event->modifiers()), static_cast<float>(at.x()),
                     static_cast<float>(at.y()));
}

void PictureBox::mouseReleaseEvent(QMouseEvent *event)
{
    const QPointF at = positionOf(event->position());
    Q_EMIT MouseUp(buttonsOf(event->button()), keysOf(event->modifiers()), static_cast<float>(at.x()),
                   static_cast<float>(at.y()));
}

void PictureBox::dragEnterEvent(QDragEnterEvent *event)
{
    if (draggedControl(*event))
        event->acceptProposedAction();
}

void PictureBox::dropEvent(QDropEvent *event)
{
    QObject *Source = draggedControl(*event);
    if (!Source)
        return;
    event->acceptProposedAction();
    const QPointF at = positionOf(event->position());
    Q_EMIT DragDrop(Source, static_cast<float>(at.x()), static_cast<float>(at.y()));
}

} // namespace vandrel
