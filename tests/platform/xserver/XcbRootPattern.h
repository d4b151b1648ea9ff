#pragma once

#include <QImage>

namespace vandrel::test {

/// Puts a picture onto the background of the screen that DISPLAY names, which has 32 bits in every pixel, from its upper
/// left corner on. It stays there. False where it could not be put there.
bool paintRoot(const QImage &picture);

/// A picture in which no two neighbouring pixels are alike, and every value of every colour occurs.
QImage pattern(const QSize &size);

} // namespace vandrel::test
