#pragma once

#include <QObject>
#include <QPoint>

class QScrollBar;
class QSize;

namespace vandrel {

class CornerHandle;
class PictureBox;
class Shape;

/// The view of the picture: its box, the band drawn over it, the bars that pan it and the handle in their corner. All
/// positions and sizes are in device-independent pixels. The widgets are members under their own names.
class PicView : public QObject
{
    Q_OBJECT

public:
    /// The widgets become children of `client`, from `top` down.
    PicView(QWidget *client, int top);

    PictureBox *Pic1;
    Shape *Shape1;
    QScrollBar *hs1;
    QScrollBar *VS1;
    CornerHandle *Command4;

    /// Puts the handle's upper left corner there, and stretches the view and the bars to it.
    void anchorAt(QPoint corner) const;
    /// Gives the box that size, and moves the handle and the bars to its new corner.
    void resizeBox(QSize size) const;

    /// Where a picture of that size is seen from: the pixel of it in the view's upper left corner. A bar that is not
    /// enabled has no part in it.
    QPoint origin(QSize picture) const;

protected:
    /// The wheel over the picture turns the bars.
    bool eventFilter(QObject *watched, QEvent *event) override;
};

/// Enables a scroll bar for a picture of `extent` pixels in a view of `shown`, or disables it and leaves its range.
void setUpScrollBar(QScrollBar &bar, bool enabled, int extent, int shown);

} // namespace vandrel
