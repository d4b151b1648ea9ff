// Showing the picture: redraw, layout, scrolling and zoom.

#include <QScrollBar>

#include "controls/PictureBox.h"
#include "controls/StatusBar.h"
#include "piceditor/ClientArea.h"
#include "piceditor/CornerHandle.h"
#include "piceditor/Shape.h"
#include "piceditor/WorkReport.h"
#include "piceditor/frmPicEdit.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

// A window at or below either size, in twips, keeps its layout.
constexpr int smallestWidth = 5000;
constexpr int smallestHeight = 3000;

constexpr double smallestZoom = 1.0 / 8;
constexpr double largestZoom = 8.0;
// The mode of scaling for a view.
constexpr qint32 viewMode = 1;

} // namespace

void frmPicEdit::RedrawPicture(const CImage &img)
{
    if (openPicture().isEmpty())
        return;
    PictureBox &Pic1 = *view.Pic1;
    Pic1.setPicture({});
    Pic1.setScaleMode(PictureBox::Pixels);
    const QSize size(img.Width(), img.Height());
    setUpScrollBar(*view.hs1, size.width() > Pic1.width(), size.width(), Pic1.width());
    setUpScrollBar(*view.VS1, size.height() > Pic1.height(), size.height(), Pic1.height());
    const QPoint origin = view.origin(size);
    Pic1.PaintPicture(img.Picture(), origin.x(), origin.y());
    Pic1.setScaleMode(PictureBox::Twips);
}

void frmPicEdit::Form_Resize()
{
    toolbar.CoolBar1->setGeometry(0, 0, client->width(), view.Pic1->y());
    StatusBar1->setGeometry(0, client->height() - StatusBar1->sizeHint().height(), client->width(),
                            StatusBar1->sizeHint().height());
    if (isMinimized() || twips(width()) <= smallestWidth || twips(height()) <= smallestHeight)
        return;
    // What lies under the pointer has moved, so the band would mark the wrong place.
    view.Shape1->hide();
    view.anchorAt({client->width() - view.Command4->width(),
                   client->height() - view.Command4->height() - StatusBar1->height()});
    RedrawPicture(*c2);
    SendProcessingArea();
}

void frmPicEdit::Form_DragDrop(QObject *Source, float X, float Y)
{
    if (Source->objectName() != view.Command4->objectName())
        return;
    const QPoint corner
        = QPointF(static_cast<double>(X), static_cast<double>(Y)).toPoint() - view.Pic1->pos();
    resizeView({corner.x(), corner.y()});
}

void frmPicEdit::Pic1_DragDrop(QObject *Source, float X, float Y)
{
    if (Source->objectName() != view.Command4->objectName())
        return;
    const double unit = view.Pic1->inUnits(1);
    const QPoint inside = QPointF(static_cast<double>(X) / unit, static_cast<double>(Y) / unit).toPoint();
    const QPoint corner = inside + view.Pic1->contentsRect().topLeft();
    resizeView({corner.x(), corner.y()});
}

void frmPicEdit::resizeView(QSize size)
{
    view.resizeBox(size);
    RedrawPicture(*c2);
    view.Shape1->hide();
    resetArea();
}

void frmPicEdit::hs1_Change()
{
    viewScrolled();
}

void frmPicEdit::VS1_Change()
{
    viewScrolled();
}

void frmPicEdit::viewScrolled()
{
    view.Shape1->hide();
    resetArea();
    RedrawPicture(*c2);
}

void frmPicEdit::in_Click()
{
    if (dZoom < largestZoom)
        zoomTo(dZoom * 2);
}

void frmPicEdit::out_Click()
{
    if (dZoom > smallestZoom)
        zoomTo(dZoom / 2);
}

void frmPicEdit::zoomTo(double factor)
{
    m_report->clear();
    if (!bZoomed) {
        c1->setPicture(c2->Picture());
        bZoomed = true;
    }
    if (!openPicture().isEmpty()) {
        c2->setPicture(c1->Picture());
        const double scaledWidth = c1->Width() * factor;
        const double scaledHeight = c1->Height() * factor;
        c2->Resize(scaledWidth, scaledHeight, viewMode);
        dZoom = factor;
        const PictureBox &Pic1 = *view.Pic1;
        setUpScrollBar(*view.hs1, scaledWidth >= Pic1.width(), static_cast<int>(scaledWidth), Pic1.width());
        setUpScrollBar(*view.VS1, scaledHeight >= Pic1.height(), static_cast<int>(scaledHeight),
                       Pic1.height());
    }
    view.Pic1->Cls();
    RedrawPicture(*c2);
    if (dZoom == 1.0)
        bZoomed = false;
}

} // namespace vandrel
