#include "platform/imaging/codecs/PictureFiles.h"

#include <QFile>

#include "platform/filesystem/AtomicFile.h"
#include "platform/filesystem/NativeFile.h"
#include "platform/imaging/codecs/BmpReader.h"
#include "platform/imaging/codecs/BmpWriter.h"
#include "platform/imaging/codecs/DrawingProgram.h"
#include "platform/imaging/codecs/JpegReader.h"
#include "platform/imaging/codecs/JpegWriter.h"
#include "platform/imaging/codecs/PcxReader.h"
#include "platform/imaging/codecs/PcxWriter.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/PictureFormat.h"
#include "platform/imaging/codecs/TiffReader.h"
#include "platform/imaging/codecs/TiffWriter.h"
#include "platform/imaging/codecs/WpgReader.h"
#include "platform/imaging/codecs/WpgWriter.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

DecodedPicture decodeByContent(QIODevice &device, QStringView extension, const DecodeRequest &request)
{
    switch (pictureFormat(device.peek(octetsThatTell), extension)) {
    case PictureFormat::Bmp:
    case PictureFormat::Dib:
        return readBmp(device, request);
    case PictureFormat::Pcx:
        return readPcx(device, request);
    case PictureFormat::Jpeg:
        return readJpeg(device, request);
    case PictureFormat::Tiff:
        return readTiff(device, request);
    case PictureFormat::Wpg:
        if (auto bitmap = readWpg(device, request))
            return *bitmap;
        return drawWithProgram(device, DrawingKind::Wpg, request);
    case PictureFormat::Wmf:
        return drawWithProgram(device, DrawingKind::Wmf, request);
    case PictureFormat::Unknown:
        break;
    }
    throw PictureFailure(device.size() == 0
                             ? pictureText("is empty.")
                             : pictureText("is no BMP, DIB, PCX, WMF, WPG, JPEG or TIFF picture."));
}

RuntimeError invalidPicture(const QString &shownName, const QString &reason)
{
    return RuntimeError(
        error::InvalidPicture,
        pictureText("%1. The file %2 %3").arg(runtimeErrorText(error::InvalidPicture), shownName, reason));
}

} // namespace

DecodedPicture decodePicture(QIODevice &device, const QString &shownName, const DecodeRequest &request)
{
    const qsizetype dot = shownName.lastIndexOf(u'.');
    const QStringView extension = dot < 0 ? QStringView() : QStringView(shownName).sliced(dot + 1);
    try {
        device.seek(0);
        return decodeByContent(device, extension, request);
    } catch (const PictureFailure &failure) {
        throw invalidPicture(shownName, failure.reason());
    } catch (const std::bad_alloc &) {
        throw invalidPicture(shownName, pictureText("needs more memory than there is."));
    }
}

DecodedPicture
loadPicture(const QByteArray &nativePath, const QString &shownName, const DecodeRequest &request)
{
    const std::unique_ptr<QFile> file = openForReading(nativePath, shownName);
    return decodePicture(*file, shownName, request);
}

void encodePicture(const Raster &picture, QIODevice &device, SaveFormat format, const FileProgress &progress)
{
    switch (format) {
    case SaveFormat::Jpeg:
        return writeJpeg(picture, device, progress);
    case SaveFormat::Tiff:
        return writeTiff(picture, device, progress);
    case SaveFormat::Bmp:
        return writeBmp(picture, true, device, progress);
    case SaveFormat::Dib:
        return writeBmp(picture, false, device, progress);
    case SaveFormat::Pcx:
        return writePcx(picture, device, progress);
    case SaveFormat::Wpg:
        return writeWpg(picture, device, progress);
    }
}

void savePicture(const Raster &picture,
                 const QByteArray &nativePath,
                 const QString &shownName,
                 SaveFormat format,
                 const FileProgress &progress)
{
    AtomicFile file(nativePath, shownName);
    file.begin();
    try {
        encodePicture(picture, file, format, progress);
    } catch (const PictureFailure &failure) {
        // What the disk has to say about it comes first.
        if (!file.isSound())
            file.commit();
        throw invalidPicture(shownName, failure.reason());
    } catch (const std::bad_alloc &) {
        throw invalidPicture(shownName, pictureText("needs more memory to be written than there is."));
    }
    file.commit();
}

} // namespace vandrel
