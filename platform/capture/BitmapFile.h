#pragma once

#include <functional>

#include <QImage>

class QIODevice;

namespace vandrel {

/// Writes a picture in Format_RGB32 as an uncompressed bitmap of 24 bits per pixel: a BITMAPFILEHEADER, a
/// BITMAPINFOHEADER of 40 octets, the rows from the bottom up, each padded to four octets. Stops where the device takes
/// no more, or `goOn`, asked every few rows, says no; returns whether it came to the end. Raises Invalid property
/// value (380) for an empty picture and one that is larger than the format can hold (4 GB).
bool writeBitmap(const QImage &picture, QIODevice &file, const std::function<bool()> &goOn);

} // namespace vandrel
