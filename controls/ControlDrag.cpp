#include "controls/ControlDrag.h"

#include <QDrag>
#include <QDropEvent>
#include <QMimeData>
#include <QWidget>

namespace vandrel {

namespace {

QString controlFormat()
{
    return QStringLiteral("application/x-vandrel-control");
}

} // namespace

void dragControl(QWidget *control)
{
    dragControl(control, control->grab(), control->rect().center());
}

void dragControl(QWidget *control, const QPixmap &picture, QPoint hotSpot)
{
    auto *carried = new QMimeData;
    carried->setData(controlFormat(), control->objectName().toUtf8());
    auto *drag = new QDrag(control);
    drag->setMimeData(carried);
    drag->setPixmap(picture);
    drag->setHotSpot(hotSpot);
    drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
}

QObject *draggedControl(const QDropEvent &event)
{
    return event.mimeData()->hasFormat(controlFormat()) ? event.source() : nullptr;
}

} // namespace vandrel
