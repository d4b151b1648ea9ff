#include "platform/imaging/control/RasterImages.h"

namespace vandrel {

namespace {

QImage::Format formatOf(int channels)
{
    switch (channels) {
    case 1:
        return QImage::Format_Indexed8;
    case 3:
        return QImage::Format_BGR888;
    default:
        // Blue, green, red, alpha in memory is this on the processors that the suite runs on.
        return QImage::Format_ARGB32;
    }
}

} // namespace

QImage imageOver(const Raster &picture, const QRect &part)
{
    const ConstPixelView view = picture.view();
    QImage image(view.at(part.left(), part.top()), part.width(), part.height(),
                 static_cast<qsizetype>(view.stride), formatOf(view.channels));
    if (picture.isIndexed()) {
        QList<QRgb> colours;
        for (const Colour colour : picture.palette())
            colours.append(qRgb(colour.red, colour.green, colour.blue));
        image.setColorTable(colours);
    }
    return image;
}

QImage copiedImage(const Raster &picture)
{
    const QImage image = imageOver(picture, QRect(0, 0, picture.width(), picture.height()));
    const QImage::Format format = picture.bitsPerPixel() == 32 ? QImage::Format_ARGB32 : QImage::Format_RGB32;
    return image.format() == format ? image.copy() : image.convertToFormat(format);
}

} // namespace vandrel
