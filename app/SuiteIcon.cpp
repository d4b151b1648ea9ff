#include "app/SuiteIcon.h"

#include <QResource>
#include <png.h>

// A static library's resources are registered by hand, from outside any namespace.
static void registerResources()
{
    Q_INIT_RESOURCE(vandrel);
}

namespace vandrel {

namespace {

// By the PNG library itself: before the toolkit's reader takes its own decoder of this format, it loads every picture
// plug-in there is to ask it first, a tenth of the time that the first window takes to appear.
QImage decoded(const QByteArray &png)
{
    png_image header{};
    header.version = PNG_IMAGE_VERSION;
    if (!png_image_begin_read_from_memory(&header, png.constData(), static_cast<std::size_t>(png.size())))
        return {};
    header.format = PNG_FORMAT_RGBA;
    QImage image(static_cast<int>(header.width), static_cast<int>(header.height), QImage::Format_RGBA8888);
    const bool isWhole = png_image_finish_read(&header, nullptr, image.bits(),
                                               static_cast<png_int_32>(image.bytesPerLine()), nullptr);
    return isWhole ? image : QImage();
}

} // namespace

QIcon suiteIcon()
{
    registerResources();
    QIcon icon;
    // A window manager is sent every size there is, so the largest ones would only cost time at the start.
    for (const int size : {16, 22, 24, 32, 48, 64, 96, 128}) {
        const QResource png(QStringLiteral(":/vandrel/icon-%1.png").arg(size));
        icon.addPixmap(QPixmap::fromImage(decoded(png.uncompressedData())));
    }
    return icon;
}

} // namespace vandrel
