#pragma once

#include <functional>

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>

namespace vandrel {

/// How a picture is wanted.
struct PictureWish {
    /// The box that it has to fit, in pixels; a smaller picture stays as it is.
    QSize box;
    /// Of resampling, in percent: below 50 it is quick, else smooth.
    int quality = 100;
    /// The smaller box in which it will be shown, in pixels; empty for none.
    QSize shownIn = {};
};

/// What was made of a picture file.
struct ReadPicture {
    /// Null for an unreadable one.
    QImage image;
    /// The same at the size that it has where it is shown; null where that is the size that it has.
    QImage shown;
};

/// Decodes a picture file, turned as its EXIF data say, with its proportions kept; its kind is told by its contents. No
/// more of it is decoded than the wish needs, as far as the format allows. Null for what is no picture, cannot be read
/// or would take too much memory, and when `isCancelled`, which is asked from time to time, says true. `shownPath` is
/// DOS-style. Usable on any thread.
ReadPicture readPicture(const QByteArray &nativePath,
                        const QString &shownPath,
                        const PictureWish &wish,
                        const std::function<bool()> &isCancelled = {});

} // namespace vandrel
