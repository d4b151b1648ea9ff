#include "piceditor/Shape.h"

#include <QPainter>
#include <QPen>

#include "controls/PictureBox.h"
#include "runtime/Events.h"

namespace vandrel {

Shape::Shape(PictureBox &box) : QWidget(&box), m_box(box)
{
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void Shape::place(double Left, double Top, double Width, double Height)
{
    const double unit = m_box.inUnits(1);
    m_band = QRectF(Left / unit, Top / unit, Width / unit, Height / unit);
    // The line runs on the outermost pixels, so that a band without extent is still a dot.
    setGeometry(m_band.toRect().adjusted(0, 0, 1, 1).translated(m_box.contentsRect().topLeft()));
}

double Shape::Width() const
{
    return m_box.inUnits(m_band.width());
}

double Shape::Height() const
{
    return m_box.inUnits(m_band.height());
}

void Shape::paintEvent(QPaintEvent *)
{
    guarded([this] {
        const QRect line = rect().adjusted(0, 0, -1, -1);
        QPainter painter(this);
        painter.setPen(QPen(Qt::white, 1));
        painter.drawRect(line);
        painter.setPen(QPen(Qt::black, 1, Qt::DashLine));
        painter.drawRect(line);
    });
}

} // namespace vandrel
