#pragma once

#include <QFrame>
#include <QPointF>

#include "controls/SharedPicture.h"

namespace vandrel {

/// A box for pictures. It paints only what is seen of them, whatever their size, and pays no attention to what would
/// lie outside of it. A pixel of a picture is a device-independent pixel of the screen, 15 twips.
class PictureBox : public QFrame
{
    Q_OBJECT

public:
    enum ScaleKind { Twips = 1, Pixels = 3 };

    explicit PictureBox(QWidget *parent = nullptr);

    /// Free for the window's own use.
    QString Tag;

    /// The unit of ScaleWidth, ScaleHeight and the events' positions; twips until assigned.
    ScaleKind ScaleMode() const { return m_scaleMode; }
    void setScaleMode(ScaleKind unit) { m_scaleMode = unit; }
    /// The size of the box's inside.
    double ScaleWidth() const { return inUnits(contentsRect().width()); }
    double ScaleHeight() const { return inUnits(contentsRect().height()); }
    /// A length in pixels, in the unit of the ScaleMode.
    double inUnits(double pixels) const;

    /// The picture shown in its own size from the upper left corner of the inside, unless another is painted.
    const SharedPicture &Picture() const { return m_picture; }
    /// Shows a picture, or none, and takes away what was painted.
    void setPicture(const SharedPicture &picture);

    /// Paints a picture in its own size, so that the pixel `x`, `y` of it comes to the upper left corner of the
    /// inside; what was painted before goes. Pixels that the picture does not have leave the box's colour.
    void PaintPicture(const SharedPicture &picture, qint32 x, qint32 y);
    /// Takes away what was painted.
    void Cls();

Q_SIGNALS:
    // Buttons and keys are added up: 1 left, 2 right, 4 middle button; 1 Shift, 2 Ctrl, 4 Alt. Positions are in the unit
    // of the ScaleMode, from the upper left corner of the inside.
    void MouseDown(int Button, int Shift, float X, float Y);
    /// Raised without a button as well.
    void MouseMove(int Button, int Shift, float X, float Y);
    void MouseUp(int Button, int Shift, float X, float Y);
    /// A control of the program (ControlDrag.h) was dropped here; needs setAcceptDrops.
    void DragDrop(QObject *Source, float X, float Y);

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    void show(const SharedPicture &picture, QPoint origin);
    QPointF positionOf(const QPointF &inWidget) const;

    ScaleKind m_scaleMode = Twips;
    SharedPicture m_picture;
    // What is seen: the picture, or what was painted in its place, and the pixel of it in the corner.
    SharedPicture m_shown;
    QPoint m_origin;
    QMetaObject::Connection m_refining;
};

} // namespace vandrel
