// Reads any octets with each of the picture readers. A picture has pixels within its palette, and what one of them
// read the writers must be able to write again.
#include <cstdint>

#include <QBuffer>

#include "platform/imaging/codecs/BmpReader.h"
#include "platform/imaging/codecs/ExifOrientation.h"
#include "platform/imaging/codecs/JpegReader.h"
#include "platform/imaging/codecs/PcxReader.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFiles.h"
#include "platform/imaging/codecs/TiffReader.h"
#include "platform/imaging/codecs/WpgReader.h"

using namespace vandrel;

namespace {

void check(const Raster &picture)
{
    if (picture.isIndexed()) {
        const ConstPixelView view = picture.view();
        for (int y = 0; y < view.height; ++y) {
            for (int x = 0; x < view.width; ++x) {
                if (view.row(y)[x] >= picture.palette().size())
                    qFatal("a pixel lies behind the palette");
            }
        }
    }
    // Writing large ones would slow each run.
    if (picture.area().pixels() > 10'000)
        return;
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    encodePicture(picture, buffer, SaveFormat::Pcx);
    DecodedPicture again = readPcx(buffer, {});
    if (again.picture.area() != picture.area() || !again.damage.isEmpty())
        qFatal("a picture does not survive being saved");
}

template<typename Reader>
void read(QBuffer &file, Reader reader)
{
    try {
        reader(file);
    } catch (const PictureFailure &) {
        // Most octets are no picture.
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QByteArray octets(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    exifOrientation(QByteArrayView(octets).sliced(std::min<qsizetype>(octets.size(), 6)));
    QBuffer file(&octets);
    file.open(QIODevice::ReadOnly);
    DecodeRequest request;
    read(file, [&](QBuffer &device) { check(readBmp(device, request).picture); });
    read(file, [&](QBuffer &device) { check(readPcx(device, request).picture); });
    read(file, [&](QBuffer &device) { check(readJpeg(device, request).picture); });
    read(file, [&](QBuffer &device) { check(readTiff(device, request).picture); });
    read(file, [&](QBuffer &device) {
        if (const auto decoded = readWpg(device, request))
            check(decoded->picture);
    });
    return 0;
}
