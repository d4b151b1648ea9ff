#pragma once

#include <vector>

#include <QByteArray>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// A kind of picture that operations treat in a way of its own.
struct PictureKind {
    QByteArray name;
    int bitsPerPixel;
    /// Whether a palette holds grays alone, in an order of its own.
    bool gray;
};

/// Every depth, and gray palettes.
const std::vector<PictureKind> &pictureKinds();

/// A picture whose pixels follow no rule, the same every time.
Raster noisePicture(const PictureKind &kind, int width, int height);
Raster noisePicture(int bitsPerPixel, int width, int height);
/// Smooth transitions with a few edges, 24 bits.
Raster smoothPicture(int width, int height);
/// All pixels of one colour, 24 bits.
Raster plainPicture(Colour colour, int width, int height);

/// An area of a picture, and what is special about it.
struct NamedArea {
    QByteArray name;
    PixelArea area;
};

/// Areas within a picture of that size, across each of its edges, and covering it.
std::vector<NamedArea> areasOf(int width, int height);

/// Whether both have the same depth, size, palette and pixels.
bool areEqual(const Raster &one, const Raster &other);

} // namespace vandrel
