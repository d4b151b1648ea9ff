#pragma once

#include <QImage>
#include <QSize>

class QIODevice;

namespace vandrel {

/// How a picture is wanted.
struct PictureWish {
    /// The box that it has to fit, in pixels; a smaller picture stays as it is.
    QSize box;
    /// Of resampling, in percent.
    int quality = 100;
};

/// Decodes a picture, turned as its EXIF data say, with its proportions kept; its kind is told by its contents. No more
/// of it is decoded than the wish needs, as far as the format allows. Null for what is no picture, is broken from the
/// start, or would take too much memory. Usable on any thread.
QImage readPicture(QIODevice &file, const PictureWish &wish);

} // namespace vandrel
