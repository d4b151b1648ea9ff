#include "controls/CoolBar.h"

namespace vandrel {

CoolBar::CoolBar(const QString &title, QWidget *parent) : QToolBar(title, parent)
{
    setMovable(false);
    setFloatable(false);
    setContextMenuPolicy(Qt::PreventContextMenu);
    toggleViewAction()->setVisible(false);
}

void CoolBar::addBand(QWidget *strip)
{
    addWidget(strip);
}

} // namespace vandrel
