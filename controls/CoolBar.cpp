#include "controls/CoolBar.h"

#include <QResizeEvent>

#include "runtime/Events.h"
#include "runtime/Twips.h"

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

void CoolBar::resizeEvent(QResizeEvent *event)
{
    QToolBar::resizeEvent(event);
    guarded([this, event] {
        if (event->size().height() != event->oldSize().height())
            Q_EMIT HeightChanged(static_cast<float>(twips(height())));
    });
}

} // namespace vandrel
