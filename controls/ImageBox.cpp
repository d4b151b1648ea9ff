#include "controls/ImageBox.h"

#include <utility>

#include <QPainter>

#include "runtime/Events.h"
#include "runtime/Twips.h"

namespace vandrel {

ImageBox::ImageBox(QWidget *parent) : QFrame(parent) { }

ImageBox::~ImageBox()
{
    setPicture(nullptr);
}

void ImageBox::setPicture(std::shared_ptr<ComingPicture> picture)
{
    if (m_picture) {
        m_picture->disconnect(this);
        m_picture->setSeen(false);
    }
    m_picture = std::move(picture);
    m_wasShown = false;
    if (m_picture)
        onEvent(m_picture.get(), &ComingPicture::changed, this, &ImageBox::renew);
    renew();
}

void ImageBox::renew()
{
    m_fitted = {};
    update();
}

float ImageBox::Width() const
{
    return static_cast<float>(twips(width()));
}

float ImageBox::Height() const
{
    return static_cast<float>(twips(height()));
}

// Scaling takes longer than painting, and a box is painted more often than its picture changes.
const QImage &ImageBox::fitted(const QSize &size)
{
    const QSize wanted = size * devicePixelRatioF();
    const QSize target = ComingPicture::sizeIn(wanted, m_picture->image().size());
    if (m_fitted.size() != target) {
        m_fitted = m_picture->scaledTo(target);
        m_fitted.setDevicePixelRatio(devicePixelRatioF());
    }
    return m_fitted;
}

void ImageBox::paintEvent(QPaintEvent *event)
{
    QFrame::paintEvent(event);
    if (!m_picture)
        return;
    m_picture->setSeen(true);
    if (m_picture->state() != ComingPicture::State::Ready)
        return;
    const QRect inside = contentsRect();
    const QImage &image = fitted(inside.size());
    const QSizeF size = image.deviceIndependentSize();
    QPainter painter(this);
    painter.drawImage(QPointF(inside.x() + (inside.width() - size.width()) / 2,
                              inside.y() + (inside.height() - size.height()) / 2),
                      image);
    if (!std::exchange(m_wasShown, true))
        Q_EMIT shown();
}

void ImageBox::leaveSight()
{
    m_fitted = {};
    if (m_picture)
        m_picture->setSeen(false);
}

void ImageBox::hideEvent(QHideEvent *event)
{
    QFrame::hideEvent(event);
    leaveSight();
}

// It may have been moved to where its window does not reach; if not, it is painted soon.
void ImageBox::moveEvent(QMoveEvent *event)
{
    QFrame::moveEvent(event);
    leaveSight();
}

} // namespace vandrel
