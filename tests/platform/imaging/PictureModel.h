#pragma once

#include <array>
#include <functional>
#include <vector>

#include <QByteArray>
#include <QString>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// A picture as tests compute with it: plain red, green, blue and alpha, whatever its depth.
struct PictureModel {
    using Pixel = std::array<int, 4>;

    explicit PictureModel(const Raster &picture);

    const Pixel &at(int x, int y) const
    {
        return pixels[static_cast<std::size_t>(y) * static_cast<std::size_t>(width)
                      + static_cast<std::size_t>(x)];
    }
    /// Beyond the edges, the pixel that it is mirrored to.
    const Pixel &mirroredAt(int x, int y) const;
    int lumaAt(int x, int y) const;

    int width;
    int height;
    std::vector<Pixel> pixels;
};

/// The three colours of a pixel of the result.
using ReferencePixel = std::function<std::array<int, 3>(const PictureModel &source, int x, int y)>;

/// Says where a result differs by more than `tolerance` from what the reference makes of the source inside the area,
/// from the source outside of it, or in alpha; empty where nowhere. Five-bit pictures are compared on five bits.
QString difference(const Raster &source,
                   const PixelArea &area,
                   const Raster &result,
                   const ReferencePixel &reference,
                   int tolerance = 0);

/// A difference with the name of the case before it, for the report.
QString labelled(const QByteArray &name, const QString &difference);

/// 255 and below, 0 and above, halves rounded up.
int limited(double value);

/// How alike two pictures of one size are, in decibels, with a margin left out on each side.
double likeness(const PictureModel &one, const PictureModel &other, int margin);

} // namespace vandrel
