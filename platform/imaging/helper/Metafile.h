#pragma once

#include <QByteArray>
#include <QImage>

namespace vandrel {

/// Draws a Windows metafile on white, as large as it says, but with at least 1000 pixels on its longer side; null for
/// what is none. 32 bits a pixel.
QImage drawMetafile(QByteArray file);

} // namespace vandrel
