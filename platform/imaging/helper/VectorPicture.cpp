#include "platform/imaging/helper/VectorPicture.h"

#include <librevenge-generators/librevenge-generators.h>
#include <librevenge-stream/librevenge-stream.h>
#include <libwpg/libwpg.h>

#include <QPainter>
#include <QSvgRenderer>

#include "platform/imaging/helper/DrawnSize.h"

namespace vandrel {

namespace {

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
    if (!page.isValid())
        return {};
    QImage image(drawnSize(page.defaultSize()), QImage::Format_RGB32);
    if (image.isNull())
        return {};
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    page.render(&painter);
    return image;
}

} // namespace vandrel
