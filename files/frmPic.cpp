#include "files/frmPic.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QScrollBar>
#include <QWheelEvent>

#include "files/frmView.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"
#include "runtime/Placement.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

constexpr int perRow = 4;
constexpr int rowsSeen = 3;
// The size of the first box, which is that of every cell, in twips.
constexpr int boxWidth = 2400;
constexpr int boxHeight = 1800;
constexpr int barWidth = 255;
// What a window's frame takes for each column and each row, in twips: the sizes stated for the window include it.
constexpr int frameWidth = 40;
constexpr int frameHeight = 130;
// The scroll bar ends a trifle above the window's edge.
constexpr int aboveEdge = 400;

} // namespace

frmPic::frmPic() : QWidget(nullptr, Qt::Window)
{
    setObjectName(QStringLiteral("frmPic"));
    setWindowTitle(tr("Thumbnails view"));
    placeInTwips(makeBox(0), 0, 0, boxWidth, boxHeight);
    makeBar();
    onEvent(VScroll1, &QScrollBar::valueChanged, this, &frmPic::VScroll1_Change);
}

ImageBox *frmPic::makeBox(int index)
{
    ImageBox *box = Pic1.add(index, new ImageBox(this));
    box->setFrameShape(QFrame::StyledPanel);
    box->setAccessibleName(tr("Thumbnail %1").arg(index + 1));
    return box;
}

ImageBox *frmPic::LoadBox(int index)
{
    ImageBox *box = makeBox(index);
    box->resize(Pic1[0]->size());
    return box;
}

int frmPic::cellWidth() const
{
    return twips(Pic1[0]->width());
}

int frmPic::cellHeight() const
{
    return twips(Pic1[0]->height());
}

void frmPic::makeBar()
{
    VScroll1 = new QScrollBar(Qt::Vertical, this);
    VScroll1->setObjectName(QStringLiteral("VScroll1"));
    VScroll1->setAccessibleName(tr("Rows"));
    VScroll1->setFocusPolicy(Qt::StrongFocus);
    VScroll1->setPageStep(rowsSeen);
    placeInTwips(VScroll1, 0, 0, barWidth, boxHeight);
}

// The place of a box in the grid that begins with another.
void frmPic::place(int index, int first)
{
    const int cell = index - first;
    const int row = cell / perRow;
    Pic1[index]->move(pixels((cell % perRow) * cellWidth()), pixels(row * cellHeight()));
}

void frmPic::LayoutThumbnails()
{
    const int count = m_view ? m_view->FileCount.value() : 0;
    for (ThumbIndex = 1; ThumbIndex <= count; ++ThumbIndex)
        place(ThumbIndex - 1, 0);
    const int windowWidth = (cellWidth() + frameWidth) * perRow + barWidth;
    const int windowHeight = (cellHeight() + frameHeight) * rowsSeen;
    setFixedSize(pixels(windowWidth - frameWidth * perRow), pixels(windowHeight - frameHeight * rowsSeen));
    placeInTwips(VScroll1, cellWidth() * perRow, 0, barWidth, windowHeight - aboveEdge);
    setScrolling(boxCount());
}

void frmPic::setScrolling(int boxes)
{
    const bool isNeeded = boxes > perRow * rowsSeen;
    VScroll1->setEnabled(isNeeded);
    if (isNeeded)
        VScroll1->setRange(0, CInt(boxes / static_cast<double>(perRow) - 2));
}

// Hiding all boxes and showing the others again would cost more than telling at once which are which.
void frmPic::VScroll1_Change()
{
    const int boxes = boxCount();
    const int first = VScroll1->value() * perRow;
    setUpdatesEnabled(false);
    for (ThumbIndex = 0; ThumbIndex < boxes; ++ThumbIndex) {
        Pic1[ThumbIndex]->setVisible(ThumbIndex >= first);
        if (ThumbIndex >= first)
            place(ThumbIndex, first);
    }
    setUpdatesEnabled(true);
}

void frmPic::Empty(frmView *view)
{
    const int boxes = boxCount();
    for (ThumbIndex = 1; ThumbIndex < boxes; ++ThumbIndex)
        delete Pic1.remove(ThumbIndex);
    Pic1[0]->setPicture(nullptr);
    Pic1[0]->show();
    VScroll1->setValue(0);
    m_view = view;
}

void frmPic::Form_QueryUnload()
{
    const QPointer<frmView> view = m_view;
    Empty(nullptr);
    if (view)
        view->ReleaseDecoders();
}

void frmPic::closeEvent(QCloseEvent *event)
{
    guarded([this] { Form_QueryUnload(); });
    event->accept();
}

void frmPic::wheelEvent(QWheelEvent *event)
{
    QCoreApplication::sendEvent(VScroll1, event);
}

} // namespace vandrel
