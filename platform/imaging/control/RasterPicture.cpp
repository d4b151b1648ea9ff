#include "platform/imaging/control/RasterPicture.h"

#include <algorithm>
#include <cmath>
#include <new>

#include <QCoreApplication>
#include <QPainter>
#include <QThreadPool>

#include "platform/imaging/control/RasterImages.h"
#include "platform/imaging/operations/Scaling.h"

namespace vandrel {

namespace {

/// Below this many pixels a picture is reduced at once: it takes less than a frame.
constexpr std::int64_t quicklyReduced = 1'000'000;

/// Smooth, whatever the depth: numbers of a palette have no means.
Raster smoothlyReduced(const Raster &picture, QSize size)
{
    const bool hasAlpha = picture.bitsPerPixel() == 32;
    try {
        auto pixels = PixelBuffer::make(size.width(), size.height(), hasAlpha ? 4 : 3);
        scaleSmoothly(picture, pixels->view(), {});
        return Raster(std::move(pixels), hasAlpha ? 32 : 24);
    } catch (const std::bad_alloc &) {
        return {};
    }
}

QRect wholePixels(const QRectF &part, const Raster &picture)
{
    const int left = std::clamp(static_cast<int>(std::floor(part.left())), 0, picture.width() - 1);
    const int top = std::clamp(static_cast<int>(std::floor(part.top())), 0, picture.height() - 1);
    const int right = std::clamp(static_cast<int>(std::ceil(part.right())), left + 1, picture.width());
    const int bottom = std::clamp(static_cast<int>(std::ceil(part.bottom())), top + 1, picture.height());
    return {left, top, right - left, bottom - top};
}

/// The part of a picture as the painter scales it quickest: where it grows, its few pixels are brought to the screen's own
/// format first, instead of each of the many that they become.
QImage imageToScale(const Raster &picture, const QRect &part, const QSizeF &shownSize)
{
    QImage image = imageOver(picture, part);
    if (part.width() < shownSize.width() && part.height() < shownSize.height())
        image.convertTo(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    return image;
}

} // namespace

void RasterPicture::paint(QPainter &painter, const QRectF &target, const QRect &part) const
{
    const Raster &shown = shownRaster();
    const double across = static_cast<double>(shown.width()) / m_picture.size.width();
    const double down = static_cast<double>(shown.height()) / m_picture.size.height();
    const QRectF source(part.x() * across, part.y() * down, part.width() * across, part.height() * down);
    // Only the part that is seen: the painter cannot address the far end of the largest pictures.
    const QRect needed = wholePixels(source, shown);
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(target, imageToScale(shown, needed, target.size()),
                      source.translated(-needed.topLeft()));
    painter.restore();
}

/// The reduced copy where there is one, and the picture itself otherwise.
const Raster &RasterPicture::shownRaster() const
{
    const bool isSmaller = m_picture.size.width() < m_picture.raster.width()
        || m_picture.size.height() < m_picture.raster.height();
    if (!isSmaller)
        return m_picture.raster;
    if (m_reduced.isNull() && !m_isReducing)
        startReducing();
    return m_reduced.isNull() ? m_picture.raster : m_reduced;
}

void RasterPicture::startReducing() const
{
    const QSize kept = m_picture.size.boundedTo(QSize(m_picture.raster.width(), m_picture.raster.height()));
    if (m_picture.raster.area().pixels() <= quicklyReduced) {
        m_reduced = smoothlyReduced(m_picture.raster, kept);
        return;
    }
    m_isReducing = true;
    QThreadPool::globalInstance()->start([raster = m_picture.raster, kept, self = weak_from_this()] {
        const Raster reduced = smoothlyReduced(raster, kept);
        // The picture may be gone by then; it is looked at on its own thread alone.
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [reduced, self] {
                if (const auto picture = self.lock())
                    picture->takeReduced(reduced);
            },
            Qt::QueuedConnection);
    });
}

void RasterPicture::takeReduced(const Raster &reduced) const
{
    if (reduced.isNull())
        return;
    m_reduced = reduced;
    Q_EMIT refined();
}

} // namespace vandrel
