#pragma once

#include <QByteArray>
#include <QImage>

namespace vandrel {

/// Draws a WPG file of lines and shapes on white, with at least 1000 pixels on its longer side; null for what is none.
/// 32 bits a pixel.
QImage drawVectorPicture(const QByteArray &file);

} // namespace vandrel
