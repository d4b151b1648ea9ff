#include "platform/pictures/PictureReader.h"

#include <new>

#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFiles.h"
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

QImage quicklyScaled(const QImage &image, const QSize &box)
{
    const bool fits = image.width() <= box.width() && image.height() <= box.height();
    return fits ? image : image.scaled(box, Qt::KeepAspectRatio, Qt::FastTransformation);
}

} // namespace

QImage readPicture(const QByteArray &nativePath,
                   const QString &shownPath,
                   const PictureWish &wish,
                   const std::function<bool()> &isCancelled)
{
    DecodeRequest request;
    request.isCancelled = isCancelled;
    try {
        if (wish.quality >= leastSmooth)
            return imageOf(loadReduced(nativePath, shownPath, wish.box, request).picture);
        request.box = wish.box;
        return quicklyScaled(imageOf(loadPicture(nativePath, shownPath, request).picture), wish.box);
    } catch (const RuntimeError &) {
        return {};
    } catch (const DecodingCancelled &) {
        return {};
    } catch (const std::bad_alloc &) {
        return {};
    }
}

} // namespace vandrel
