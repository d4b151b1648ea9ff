#pragma once

#include <QByteArray>
#include <QString>

#include "platform/imaging/codecs/Decoding.h"

namespace vandrel {

/// File formats as saving takes them.
enum class SaveFormat { Jpeg = 0, Tiff = 1, Bmp = 7, Pcx = 8, Dib = 9, Wpg = 15 };

/// Decodes a picture file by its content: BMP, DIB, PCX, WMF, WPG, JPEG or TIFF. Names are native octets; the shown
/// name is for error texts. Raises the failures of opening a file and Invalid picture (481) with the file's name and
/// the reason; DecodingCancelled where the request says so. Usable from any thread.
DecodedPicture
loadPicture(const QByteArray &nativePath, const QString &shownName, const DecodeRequest &request = {});

/// The same from anything that can be read at any position.
DecodedPicture decodePicture(QIODevice &device, const QString &shownName, const DecodeRequest &request = {});

/// Writes a picture file at the picture's depth, as far as the format has it, with its resolution; the old file is
/// replaced as a whole or not at all. Raises Invalid picture (481) for one that the format cannot hold, and the failures
/// of AtomicFile. Usable from any thread.
void savePicture(const Raster &picture,
                 const QByteArray &nativePath,
                 const QString &shownName,
                 SaveFormat format,
                 const FileProgress &progress = {});

/// The same to any device that can go to any position; its failures are its owner's to see. Raises PictureFailure.
void encodePicture(const Raster &picture,
                   QIODevice &device,
                   SaveFormat format,
                   const FileProgress &progress = {});

} // namespace vandrel
