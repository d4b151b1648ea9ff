#include "piceditor/PicView.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QScrollBar>
#include <QWheelEvent>

#include "controls/PictureBox.h"
#include "piceditor/CornerHandle.h"
#include "piceditor/Shape.h"

namespace vandrel {

namespace {

// What the bars have before the first picture.
constexpr int initialMaximum = 32767;
constexpr int arrowStep = 20;
// The frame takes two pixels on each side of the box, which the picture's offset makes up for.
constexpr int frameWidth = 2;
constexpr int offsetBeyondTheEnd = 3;

template<typename Widget>
Widget *named(Widget *widget, const char *name, const QString &accessibleName)
{
    widget->setObjectName(QString::fromLatin1(name));
    widget->setAccessibleName(accessibleName);
    return widget;
}

QScrollBar *addScrollBar(Qt::Orientation orientation, QWidget *client)
{
    auto *bar = new QScrollBar(orientation, client);
    bar->setMaximum(initialMaximum);
    bar->setSingleStep(arrowStep);
    bar->setEnabled(false);
    bar->setFocusPolicy(Qt::TabFocus);
    return bar;
}

int offsetOf(const QScrollBar &bar, int extent, int shown)
{
    if (!bar.isEnabled())
        return 0;
    const double beyond = static_cast<double>(extent) - shown + offsetBeyondTheEnd;
    return static_cast<int>(std::floor(beyond * bar.value() / bar.maximum()));
}

} // namespace

PicView::PicView(QWidget *client, int top)
    : Pic1(named(new PictureBox(client), "Pic1", tr("Picture"))),
      Shape1(named(new Shape(*Pic1), "Shape1", tr("Processing area"))),
      hs1(named(addScrollBar(Qt::Horizontal, client), "hs1", tr("Scroll horizontally"))),
      VS1(named(addScrollBar(Qt::Vertical, client), "VS1", tr("Scroll vertically"))),
      Command4(named(new CornerHandle(client), "Command4", tr("Resize the view")))
{
    Pic1->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    Pic1->setLineWidth(frameWidth);
    Pic1->setAcceptDrops(true);
    Pic1->installEventFilter(this);
    Pic1->move(0, top);
    hs1->resize(0, hs1->sizeHint().height());
    VS1->move(0, top);
    VS1->resize(VS1->sizeHint().width(), 0);
    Command4->resize(VS1->width(), hs1->height());
}

void PicView::anchorAt(QPoint corner) const
{
    Command4->move(corner);
    hs1->setGeometry(hs1->x(), corner.y(), std::max(0, corner.x() - hs1->x()), hs1->height());
    VS1->setGeometry(corner.x(), VS1->y(), VS1->width(), std::max(0, corner.y() - VS1->y()));
    Pic1->resize(std::max(0, corner.x() - Pic1->x()), std::max(0, corner.y() - Pic1->y()));
}

void PicView::resizeBox(QSize size) const
{
    const QSize box = size.expandedTo({0, 0});
    anchorAt(Pic1->pos() + QPoint(box.width(), box.height()));
}

QPoint PicView::origin(QSize picture) const
{
    return {offsetOf(*hs1, picture.width(), Pic1->width()), offsetOf(*VS1, picture.height(), Pic1->height())};
}

bool PicView::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != Pic1 || event->type() != QEvent::Wheel)
        return QObject::eventFilter(watched, event);
    const auto *wheel = static_cast<QWheelEvent *>(event);
    const bool isSideways = std::abs(wheel->angleDelta().x()) > std::abs(wheel->angleDelta().y())
        || wheel->modifiers().testFlag(Qt::ShiftModifier);
    QScrollBar *bar = isSideways ? hs1 : VS1;
    if (bar->isEnabled())
        QApplication::sendEvent(bar, event);
    return true;
}

void setUpScrollBar(QScrollBar &bar, bool enabled, int extent, int shown)
{
    bar.setEnabled(enabled);
    if (!enabled)
        return;
    bar.setMaximum(extent);
    bar.setPageStep(shown);
}

} // namespace vandrel
