// The processing area drawn with the mouse, and the pixel under the pointer.

#include <cmath>

#include <QRectF>
#include <QScrollBar>

#include "controls/Label.h"
#include "controls/PictureBox.h"
#include "piceditor/Shape.h"
#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

namespace {

constexpr int leftButton = 1;

// Where the pointer is in the picture, along one side: the part that is scrolled past, and the way into the view. Both
// are cut to whole pixels before they are added. This offset lacks the three pixels that the redraw has, on purpose.
qint32 pixelUnder(const QScrollBar &bar, int extent, int shown, double way)
{
    const double passed = (static_cast<double>(extent) - shown) * bar.value() / bar.maximum();
    return static_cast<qint32>(std::floor(passed)) + static_cast<qint32>(std::floor(way));
}

} // namespace

void frmPicEdit::resetArea()
{
    lAreaLeft = 0;
    lAreaTop = 0;
    lAreaRight = c2->Width();
    lAreaBottom = c2->Height();
    SendProcessingArea();
}

void frmPicEdit::Pic1_MouseDown(int Button, int, float X, float Y)
{
    if (Button != leftButton)
        return;
    bDragging = true;
    vDragX = X;
    vDragY = Y;
    // A band left from an earlier drag must not lend its size to a click.
    view.Shape1->place(static_cast<double>(X), static_cast<double>(Y), 0, 0);
    m_dragsLeft = false;
    m_dragsUp = false;
}

void frmPicEdit::Pic1_MouseMove(int, int, float X, float Y)
{
    if (bDragging)
        drawBand(X, Y);
    if (bZoomed)
        m_pointerPanel->setText({});
    else
        showPointer(X, Y);
}

void frmPicEdit::drawBand(float X, float Y)
{
    m_dragsLeft = X < vDragX;
    m_dragsUp = Y < vDragY;
    const QRectF band = QRectF(QPointF(static_cast<double>(vDragX), static_cast<double>(vDragY)),
                               QPointF(static_cast<double>(X), static_cast<double>(Y)))
                            .normalized();
    view.Shape1->place(band.left(), band.top(), band.width(), band.height());
    view.Shape1->show();
}

void frmPicEdit::showPointer(float X, float Y)
{
    const PictureBox &Pic1 = *view.Pic1;
    const qint32 x = pixelUnder(*view.hs1, c2->Width(), Pic1.width(),
                                static_cast<double>(X) * Pic1.width() / Pic1.ScaleWidth());
    const qint32 y = pixelUnder(*view.VS1, c2->Height(), Pic1.height(),
                                static_cast<double>(Y) * Pic1.height() / Pic1.ScaleHeight());
    m_pointerPanel->setText(toText(x) + QStringLiteral(", ") + toText(y));
    nPointerX = x;
    nPointerY = y;
}

void frmPicEdit::Pic1_MouseUp(int Button, int, float, float)
{
    PictureBox &Pic1 = *view.Pic1;
    if (Button != leftButton) {
        view.Shape1->hide();
        Pic1.setScaleMode(PictureBox::Pixels);
        resetArea();
        return;
    }
    bDragging = false;
    Pic1.setScaleMode(PictureBox::Pixels);
    const qint32 width = CLng(view.Shape1->Width());
    const qint32 height = CLng(view.Shape1->Height());
    // The last coordinate is the right or the left side of the band, as the drag went: the area is what is framed.
    lAreaRight = nPointerX + (m_dragsLeft ? width : 0);
    lAreaBottom = nPointerY + (m_dragsUp ? height : 0);
    lAreaLeft = lAreaRight - width;
    lAreaTop = lAreaBottom - height;
    SendProcessingArea();
    Pic1.setScaleMode(PictureBox::Twips);
}

} // namespace vandrel
