#include "platform/imaging/control/PicturePrinting.h"

#include <algorithm>

#include <QPainter>
#include <QPrinter>

#include "platform/imaging/control/RasterImages.h"

namespace vandrel {

namespace {

constexpr double usualDotsPerInch = 96;
/// Pixels handed to the printing system at a time, which makes copies of its own.
constexpr qint64 pixelsPerBand = 8'000'000;

/// Where the picture comes to lie, in the printer's dots.
QRectF placeOnPage(const Raster &picture, const QRect &part, const QPrinter &printer)
{
    const Resolution resolution = picture.resolution();
    const double across = resolution.isKnown() ? resolution.horizontal : usualDotsPerInch;
    const double down = resolution.isKnown() ? resolution.vertical : usualDotsPerInch;
    QSizeF size(part.width() / across * printer.resolution(), part.height() / down * printer.resolution());
    const QSizeF page = printer.pageRect(QPrinter::DevicePixel).size();
    if (size.width() > page.width() || size.height() > page.height())
        size.scale(page, Qt::KeepAspectRatio);
    return {(page.width() - size.width()) / 2, (page.height() - size.height()) / 2, size.width(),
            size.height()};
}

} // namespace

bool printPicture(const Raster &picture, const QRect &part, QPrinter &printer, WorkProgress &progress)
{
    QPainter painter;
    if (!painter.begin(&printer))
        return false;
    const QRectF place = placeOnPage(picture, part, printer);
    const double perRow = place.height() / part.height();
    const int rows = static_cast<int>(std::max<qint64>(1, pixelsPerBand / part.width()));
    for (int top = 0; top < part.height(); top += rows) {
        const int height = std::min(rows, part.height() - top);
        const QRect band(part.left(), part.top() + top, part.width(), height);
        const QRectF target(place.left(), place.top() + top * perRow, place.width(), height * perRow);
        painter.drawImage(target, imageOver(picture, band));
        progress = static_cast<int>(qint64{100} * (top + height) / part.height());
    }
    return painter.end();
}

} // namespace vandrel
