#include "platform/pictures/PictureReader.h"

#include <new>

#include <QImageReader>

namespace vandrel {

namespace {

constexpr int longestSide = 65535;
constexpr qint64 mostPixels = 300'000'000;

bool isWithinLimits(const QSize &size)
{
    return size.width() <= longestSide && size.height() <= longestSide
        && qint64{size.width()} * size.height() <= mostPixels;
}

QImage decoded(QImageReader &reader, const PictureWish &wish)
{
    const QSize size = reader.size();
    if (size.isValid() && !isWithinLimits(size))
        return {};
    const bool isTurned = reader.transformation() & QImageIOHandler::TransformationRotate90;
    const QSize box = isTurned ? wish.box.transposed() : wish.box;
    if (size.isValid() && (size.width() > box.width() || size.height() > box.height()))
        reader.setScaledSize(size.scaled(box, Qt::KeepAspectRatio).expandedTo({1, 1}));
    QImage image = reader.read();
    // A format that does not tell its size before it is read.
    if (image.width() > wish.box.width() || image.height() > wish.box.height())
        image = image.scaled(wish.box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (image.isNull())
        return image;
    return image.convertToFormat(image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied
                                                         : QImage::Format_RGB32);
}

} // namespace

QImage readPicture(QIODevice &file, const PictureWish &wish)
{
    try {
        QImageReader reader(&file);
        reader.setDecideFormatFromContent(true);
        reader.setAutoTransform(true);
        reader.setQuality(wish.quality);
        return decoded(reader, wish);
    } catch (const std::bad_alloc &) {
        return {};
    }
}

} // namespace vandrel
