#include "platform/pictures/PictureReader.h"

#include <new>

#include "controls/PictureDecoder.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/codecs/Reduction.h"
#include "platform/imaging/raster/Conversions.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr int leastSmooth = 50;

QImage imageOf(const Raster &picture)
{
    const bool hasAlpha = picture.bitsPerPixel() == 32;
    const Raster colours = hasAlpha ? picture : asTrueColour(picture);
    const ConstPixelView view = colours.view();
    const QImage borrowed(view.data, view.width, view.height, static_cast<qsizetype>(view.stride),
                          hasAlpha ? QImage::Format_ARGB32 : QImage::Format_BGR888);
    return borrowed.convertToFormat(hasAlpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
}

QImage scaled(const QImage &image, const QSize &box, Qt::TransformationMode mode)
{
    const QSize size = ComingPicture::sizeIn(box, image.size());
    return size == image.size() ? image : image.scaled(size, Qt::IgnoreAspectRatio, mode);
}

// By a whole number, to no less than twice its size in the box: this costs little memory however large the picture is,
// and leaves the fine scaling enough to work on.
Raster coarselyReduced(const Raster &picture, const QSize &box)
{
    const QSize all(picture.width(), picture.height());
    const int factor = all.width() / (2 * ComingPicture::sizeIn(box, all).width());
    return factor < 2 ? picture : reduced(picture, all / factor);
}

QImage wished(const Raster &picture, const PictureWish &wish)
{
    if (wish.quality < leastSmooth)
        return scaled(imageOf(picture), wish.box, Qt::FastTransformation);
    return scaled(imageOf(coarselyReduced(picture, wish.box)), wish.box, Qt::SmoothTransformation);
}

QImage shownOf(const QImage &image, const QSize &box)
{
    if (box.isEmpty() || ComingPicture::sizeIn(box, image.size()) == image.size())
        return {};
    return scaled(image, box, Qt::SmoothTransformation);
}

} // namespace

ReadPicture readPicture(const QByteArray &nativePath,
                        const QString &shownPath,
                        const PictureWish &wish,
                        const std::function<bool()> &isCancelled)
{
    DecodeRequest request;
    request.isCancelled = isCancelled;
    request.box = wish.box;
    try {
        const QImage image = wished(loadPicture(nativePath, shownPath, request).picture, wish);
        return {image, shownOf(image, wish.shownIn)};
    } catch (const RuntimeError &) {
        return {};
    } catch (const DecodingCancelled &) {
        return {};
    } catch (const std::bad_alloc &) {
        return {};
    }
}

} // namespace vandrel
