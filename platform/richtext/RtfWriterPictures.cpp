#include "platform/richtext/RtfWriterPictures.h"

#include <cmath>

#include <QBuffer>
#include <QImage>
#include <QImageReader>
#include <QSize>
#include <QUrl>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfWriterOutput.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

// Octets on one line of digits.
constexpr qsizetype lineOctets = 64;

struct EncodedPicture {
    const char *kind = nullptr; ///< \pngblip, \jpegblip
    QByteArray data;
    QSize pixels;
    QSizeF goal; ///< twips
};

EncodedPicture asPng(const QImage &image)
{
    EncodedPicture picture{"pngblip", {}, image.size(), {}};
    QBuffer buffer(&picture.data);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return picture;
}

// Data that nothing here can read is written as it is, for readers that can.
EncodedPicture unread(const QByteArray &data)
{
    return {data.startsWith("\xFF\xD8") ? "jpegblip" : "pngblip", data, {}, {}};
}

// Reads only the header, unless the picture has to be turned into another kind.
EncodedPicture fromData(const QByteArray &data)
{
    QByteArray octets = data;
    QBuffer buffer(&octets);
    QImageReader reader(&buffer);
    const QSize pixels = reader.size();
    if (!pixels.isValid())
        return unread(data);
    if (reader.format() == "png")
        return {"pngblip", data, pixels, {}};
    if (reader.format() == "jpeg")
        return {"jpegblip", data, pixels, {}};
    if (qint64(pixels.width()) * pixels.height() > RichTextDocument::maximumPicturePixels)
        return unread(data);
    const QImage image = reader.read();
    return image.isNull() ? unread(data) : asPng(image);
}

EncodedPicture fromResource(const QTextDocument &document, const QString &name)
{
    const QVariant resource = document.resource(QTextDocument::ImageResource, QUrl(name));
    if (resource.userType() == QMetaType::QByteArray)
        return fromData(resource.toByteArray());
    const auto image = resource.value<QImage>();
    return image.isNull() ? EncodedPicture() : asPng(image);
}

EncodedPicture encoded(const QTextDocument &document, const QString &name)
{
    const auto *own = qobject_cast<const RichTextDocument *>(&document);
    const DocumentPicture *known = own ? own->picture(name) : nullptr;
    if (!known)
        return fromResource(document, name);
    EncodedPicture picture = fromData(known->data);
    picture.goal = known->goal;
    return picture;
}

// The size shown: the format's own, else the goal it came with, else a pixel for a pixel.
QSizeF shownTwips(const QTextImageFormat &format, const EncodedPicture &picture)
{
    const QSizeF natural = picture.goal.isEmpty() ? QSizeF(picture.pixels) * twipsPerPixel : picture.goal;
    const double width = format.width() > 0 ? format.width() * twipsPerPixel : natural.width();
    const double height = format.height() > 0 ? format.height() * twipsPerPixel : natural.height();
    return {width, height};
}

void appendDigits(QByteArray &rtf, const QByteArray &data)
{
    for (qsizetype i = 0; i < data.size(); i += lineOctets)
        rtf += '\n' + data.mid(i, lineOctets).toHex();
}

} // namespace

QByteArray rtfPicture(const QTextDocument &document, const QTextImageFormat &format)
{
    const QByteArray loaded = format.property(richtext::PictureRtf).toByteArray();
    if (!loaded.isEmpty())
        return loaded;
    const EncodedPicture picture = encoded(document, format.name());
    if (!picture.kind)
        return {};
    const QSizeF shown = shownTwips(format, picture);
    QByteArray rtf("{\\pict\\");
    rtf += picture.kind;
    if (picture.pixels.isValid()) {
        appendRtfWord(rtf, "picw", picture.pixels.width());
        appendRtfWord(rtf, "pich", picture.pixels.height());
    }
    appendRtfWord(rtf, "picwgoal", static_cast<int>(std::lround(shown.width())));
    appendRtfWord(rtf, "pichgoal", static_cast<int>(std::lround(shown.height())));
    appendDigits(rtf, picture.data);
    return rtf + '}';
}

} // namespace vandrel
