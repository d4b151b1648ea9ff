#pragma once

class QMenu;
class QWidget;

namespace vandrel {

/// Shows a menu for a button that was pressed: at the pointer for a click, below the button for the keyboard, whose
/// user may have the pointer anywhere. Returns at once. `button` may be null: then at the pointer.
void popUp(QMenu *menu, const QWidget *button);

} // namespace vandrel
