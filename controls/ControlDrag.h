#pragma once

class QDropEvent;
class QObject;
class QWidget;

namespace vandrel {

/// Drags a control of the program ("Drag with action 1") until the button is let go; its picture goes with the pointer.
/// Other programs, and widgets that take texts or files, do not accept such a drag. Returns when it has ended.
void dragControl(QWidget *control);

/// The control that is being dragged; null when it is anything else.
QObject *draggedControl(const QDropEvent &event);

} // namespace vandrel
