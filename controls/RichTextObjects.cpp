#include "controls/RichTextObjects.h"

#include <QAbstractTextDocumentLayout>
#include <QImage>
#include <QPaintDevice>
#include <QPainter>
#include <QPixmap>
#include <QTextDocument>
#include <QTextImageFormat>
#include <QUrl>

#include "controls/NoteMark.h"
#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

// The side of a picture of unknown size, in pixels.
constexpr qreal unknownSide = 16;

// Sizes in a document are in units of 96 per inch; a printer has more dots.
qreal deviceScale(const QTextDocument &document)
{
    const QPaintDevice *device = document.documentLayout()->paintDevice();
    return device ? device->logicalDpiY() / 96.0 : 1.0;
}

} // namespace

QSizeF HiddenObject::intrinsicSize(QTextDocument *, int, const QTextFormat &)
{
    return {0, 0};
}

void HiddenObject::drawObject(QPainter *, const QRectF &, QTextDocument *, int, const QTextFormat &) { }

PictureObject::PictureObject(QTextDocument *pictures, QObject *parent) : QObject(parent), m_pictures(pictures)
{ }

QImage PictureObject::image(QTextDocument *document, const QTextFormat &format) const
{
    QTextDocument *holder = m_pictures ? m_pictures : document;
    const QVariant picture
        = holder->resource(QTextDocument::ImageResource, QUrl(format.toImageFormat().name()));
    if (picture.metaType() == QMetaType::fromType<QPixmap>())
        return picture.value<QPixmap>().toImage();
    return picture.value<QImage>();
}

QSizeF PictureObject::intrinsicSize(QTextDocument *document, int, const QTextFormat &format)
{
    const QTextImageFormat picture = format.toImageFormat();
    QSizeF size(picture.width(), picture.height());
    if (size.width() <= 0 || size.height() <= 0) {
        QSizeF natural = image(document, format).size();
        if (natural.isEmpty())
            natural = {unknownSide, unknownSide};
        if (size.width() > 0)
            size.setHeight(size.width() * natural.height() / natural.width());
        else if (size.height() > 0)
            size.setWidth(size.height() * natural.width() / natural.height());
        else
            size = natural;
    }
    return size * deviceScale(*document);
}

void PictureObject::drawObject(
    QPainter *painter, const QRectF &rect, QTextDocument *document, int, const QTextFormat &format)
{
    const QImage picture = image(document, format);
    if (!picture.isNull()) {
        painter->save();
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        painter->drawImage(rect, picture);
        painter->restore();
        return;
    }
    painter->save();
    painter->setPen(QPen(Qt::gray, 0));
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(rect.adjusted(0, 0, -1, -1));
    painter->restore();
}

void registerRichTextObjects(QTextDocument &document, QTextDocument *pictures)
{
    QAbstractTextDocumentLayout *layout = document.documentLayout();
    layout->registerHandler(richtext::RawObject, new HiddenObject(layout));
    layout->registerHandler(richtext::NoteMark, new NoteMark(layout));
    layout->registerHandler(QTextFormat::ImageObject, new PictureObject(pictures, layout));
}

} // namespace vandrel
