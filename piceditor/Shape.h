#pragma once

#include <QRectF>
#include <QWidget>

namespace vandrel {

class PictureBox;

/// The rectangle of the processing area that is drawn over a picture, in dashes that stand out from any colour. It lets
/// the mouse through. Positions and sizes are in the unit of its box's ScaleMode.
class Shape : public QWidget
{
    Q_OBJECT

public:
    /// Hidden until shown; a child of `box`.
    explicit Shape(PictureBox &box);

    void place(double Left, double Top, double Width, double Height);
    double Width() const;
    double Height() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    PictureBox &m_box;
    // In pixels of the screen, from the upper left corner of the box's inside.
    QRectF m_band;
};

} // namespace vandrel
