#include "platform/imaging/helper/VectorPicture.h"

#include <algorithm>

#include <librevenge-generators/librevenge-generators.h>
#include <librevenge-stream/librevenge-stream.h>
#include <libwpg/libwpg.h>

#include <QPainter>
#include <QSvgRenderer>

namespace vandrel {

namespace {

constexpr int shortestLongSide = 1000;
constexpr int longestSide = 8000;

/// The first page as a drawing that the toolkit reads; empty where there is none.
QByteArray firstPage(const QByteArray &file)
{
    librevenge::RVNGStringStream stream(reinterpret_cast<const unsigned char *>(file.constData()),
                                        static_cast<unsigned>(file.size()));
    if (!libwpg::WPGraphics::isSupported(&stream))
        return {};
    librevenge::RVNGStringVector pages;
    librevenge::RVNGSVGDrawingGenerator generator(pages, "");
    if (!libwpg::WPGraphics::parse(&stream, &generator) || pages.empty())
        return {};
    return QByteArray(pages[0].cstr());
}

} // namespace

QImage drawVectorPicture(const QByteArray &file)
{
    QSvgRenderer page(firstPage(file));
    QSize size = page.defaultSize();
    if (!page.isValid() || size.isEmpty())
        return {};
    const int longer = std::max(size.width(), size.height());
    const int wanted = std::clamp(longer, shortestLongSide, longestSide);
    size = size.scaled(wanted, wanted, Qt::KeepAspectRatio).expandedTo(QSize(1, 1));
    QImage image(size, QImage::Format_RGB32);
    if (image.isNull())
        return {};
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    page.render(&painter);
    return image;
}

} // namespace vandrel
