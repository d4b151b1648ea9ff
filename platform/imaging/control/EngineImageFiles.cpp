#include <algorithm>
#include <atomic>
#include <cmath>

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>

#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/codecs/Reduction.h"
#include "platform/imaging/control/EngineImage.h"
#include "platform/imaging/control/PicturePrinting.h"
#include "platform/imaging/control/RasterImages.h"
#include "platform/imaging/operations/Resize.h"

namespace vandrel {

namespace {

constexpr float twipsPerPixel = 15;

/// Numbers the files that were loaded.
int nextSource()
{
    static std::atomic<int> last = 0;
    return ++last;
}

SaveFormat saveFormatOf(qint16 code)
{
    switch (code) {
    case CImage::Jpeg:
        return SaveFormat::Jpeg;
    case CImage::Tiff:
        return SaveFormat::Tiff;
    case CImage::Bmp:
        return SaveFormat::Bmp;
    case CImage::Pcx:
        return SaveFormat::Pcx;
    case CImage::Dib:
        return SaveFormat::Dib;
    case CImage::Wpg:
        return SaveFormat::Wpg;
    default:
        throw RuntimeError(error::InvalidProcedureCall);
    }
}

RuntimeError noPicture()
{
    return RuntimeError(error::InvalidPicture);
}

/// A number of pixels as a place in a picture: anything beyond is its end.
int within(double value, int most)
{
    return value > 0 ? static_cast<int>(std::min<double>(value, most)) : 0;
}

} // namespace

void EngineImage::LoadImageFile(const QString &path)
{
    Clear();
    DecodeRequest request;
    request.drawingProgram = m_services.drawingProgram;
    DecodedPicture decoded;
    try {
        const QByteArray native = m_services.drives->toNative(path);
        work([&](WorkProgress &progress) {
            request.progress = [&progress](int percent) { progress = percent; };
            decoded = loadPicture(native, path, request);
        });
    } catch (const RuntimeError &failure) {
        m_failure = failure;
        return;
    }
    setImage({decoded.picture, QSize(decoded.picture.width(), decoded.picture.height()), nextSource()});
    if (!decoded.damage.isEmpty())
        Q_EMIT Notice(decoded.damage);
}

void EngineImage::SaveImageFile(const QString &path, qint16 format)
{
    const SaveFormat kind = saveFormatOf(format);
    if (m_image.isNull())
        throw noPicture();
    const QByteArray native = m_services.drives->toNative(path);
    const Raster raster = computedRaster();
    if (raster.isNull())
        throw noPicture();
    work([&](WorkProgress &progress) {
        savePicture(raster, native, path, kind, [&progress](int percent) { progress = percent; });
    });
    if (raster.bitsPerPixel() == 32
        && (kind == SaveFormat::Jpeg || kind == SaveFormat::Pcx || kind == SaveFormat::Wpg))
        Q_EMIT Notice(
            tr("This format cannot keep what is see-through: such pixels are saved with their full colour."));
}

void EngineImage::PrintImage(QWidget *owner, double left, double top, double width, double height)
{
    if (m_image.isNull())
        throw noPicture();
    const Raster raster = computedRaster();
    if (raster.isNull())
        throw noPicture();
    const QPoint corner(within(left, raster.width()), within(top, raster.height()));
    const QSize size(within(width, raster.width() - corner.x()),
                     within(height, raster.height() - corner.y()));
    if (size.isEmpty())
        throw noPicture();
    QPrinter *printer = m_services.printer->hDC(owner, tr("Picture"));
    if (printer == nullptr)
        return;
    bool isPrinted = false;
    work([&](WorkProgress &progress) {
        isPrinted = printPicture(raster, QRect(corner, size), *printer, progress);
    });
    if (!isPrinted)
        throw RuntimeError(error::PrinterError);
}

void EngineImage::CopyToClipboard()
{
    if (m_image.isNull())
        return;
    const Raster raster = computedRaster();
    if (raster.isNull())
        return;
    QImage image;
    work([&](WorkProgress &) { image = copiedImage(raster); });
    if (image.isNull()) {
        refuse(tr("There is not enough memory to copy the picture."));
        return;
    }
    auto data = std::make_unique<QMimeData>();
    data->setImageData(image);
    QGuiApplication::clipboard()->setMimeData(data.release());
}

bool EngineImage::ResampleTo(float width, float height, qint32)
{
    if (m_image.isNull())
        return refuse(tr("There is no picture to resize."));
    if (!std::isfinite(width) || !std::isfinite(height))
        return refuse(tr("A picture needs a size in numbers."));
    const QSize box(static_cast<int>(std::clamp(width / twipsPerPixel, 0.0F, 65535.0F)),
                    static_cast<int>(std::clamp(height / twipsPerPixel, 0.0F, 65535.0F)));
    if (box.isEmpty())
        return refuse(tr("A picture cannot be %1 x %2 pixels large.").arg(box.width()).arg(box.height()));
    const QSize size = m_image.size.scaled(box, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    return operate([size](const Subject &subject) -> Outcome {
        const QSize all(subject.picture.width(), subject.picture.height());
        if (size.width() > all.width() || size.height() > all.height())
            return resize(subject, size.width(), size.height());
        return refusingOnFailure({subject.picture}, [&]() -> Outcome {
            return {true, reduced(subject.picture, size)};
        });
    });
}

void EngineImage::SetOption(qint16, qint16)
{
    // Every resampled picture is computed at the best quality, from all of the pixels: it takes no longer that way.
}

} // namespace vandrel
