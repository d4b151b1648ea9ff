#include "controls/UpDown.h"

#include <QKeyEvent>
#include <QToolButton>
#include <QVBoxLayout>

#include "runtime/Events.h"

namespace vandrel {

UpDown::UpDown(QWidget *parent) : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->setSpacing(0);
    QToolButton *up = arrow(Qt::UpArrow, tr("Up"));
    QToolButton *down = arrow(Qt::DownArrow, tr("Down"));
    column->addWidget(up);
    column->addWidget(down);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Preferred);
    onEvent(up, &QToolButton::pressed, this, &UpDown::UpClick);
    onEvent(down, &QToolButton::pressed, this, &UpDown::DownClick);
}

QToolButton *UpDown::arrow(Qt::ArrowType type, const QString &name)
{
    auto *button = new QToolButton(this);
    button->setObjectName(name);
    button->setAccessibleName(name);
    button->setArrowType(type);
    button->setAutoRepeat(true);
    button->setFocusPolicy(Qt::NoFocus);
    // Both together are as high as the box they stand beside.
    button->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Ignored);
    button->setIconSize(QSize(fontMetrics().height() / 2, fontMetrics().height() / 2));
    return button;
}

void UpDown::keyPressEvent(QKeyEvent *event)
{
    guarded([this, event] {
        if (event->key() == Qt::Key_Up)
            Q_EMIT UpClick();
        else if (event->key() == Qt::Key_Down)
            Q_EMIT DownClick();
        else
            QWidget::keyPressEvent(event);
    });
}

} // namespace vandrel
