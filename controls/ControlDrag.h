#pragma once

#include <QPoint>

class QDropEvent;
class QObject;
class QPixmap;
class QWidget;

namespace vandrel {

/// Drags a control of the program ("Drag with action 1") until the button is let go; its picture goes with the pointer.
/// Other programs, and widgets that take texts or files, do not accept such a drag. Returns when it has ended.
void dragControl(QWidget *control);
/// The same with another picture, whose `hotSpot` stays at the pointer.
void dragControl(QWidget *control, const QPixmap &picture, QPoint hotSpot);

/// The control that is being dragged; null when it is anything else.
QObject *draggedControl(const QDropEvent &event);

} // namespace vandrel
