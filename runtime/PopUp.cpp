#include "runtime/PopUp.h"

#include <QCursor>
#include <QMenu>

namespace vandrel {

void popUp(QMenu *menu, const QWidget *button)
{
    const QPoint pointer = QCursor::pos();
    const bool isClicked = !button || button->rect().contains(button->mapFromGlobal(pointer));
    menu->popup(isClicked ? pointer : button->mapToGlobal(button->rect().bottomLeft()));
}

} // namespace vandrel
