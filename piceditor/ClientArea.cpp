#include "piceditor/ClientArea.h"

#include <QDragEnterEvent>
#include <QDropEvent>

#include "controls/ControlDrag.h"

namespace vandrel {

ClientArea::ClientArea(QWidget *parent) : QWidget(parent)
{
    setObjectName(QStringLiteral("ClientArea"));
    setAcceptDrops(true);
}

void ClientArea::resizeEvent(QResizeEvent *)
{
    Q_EMIT Resize();
}

void ClientArea::dragEnterEvent(QDragEnterEvent *event)
{
    if (draggedControl(*event))
        event->acceptProposedAction();
}

void ClientArea::dropEvent(QDropEvent *event)
{
    QObject *Source = draggedControl(*event);
    if (!Source)
        return;
    event->acceptProposedAction();
    Q_EMIT DragDrop(Source, static_cast<float>(event->position().x()),
                    static_cast<float>(event->position().y()));
}

} // namespace vandrel
