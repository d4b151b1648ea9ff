#include "controls/RichTextDocument.h"

#include <algorithm>

#include <QBuffer>
#include <QCryptographicHash>
#include <QImageReader>
#include <QPainter>
#include <QUrl>

#include "runtime/Twips.h"

namespace vandrel {

namespace {

/// Decoded pictures are kept up to this much, in kilobytes.
constexpr int decodedKilobytes = 128 * 1024;
constexpr int largestFrame = 2000;

/// Stands for a picture that is not shown: an empty frame with a cross.
QImage frameOf(const QSizeF &goal)
{
    const auto side = [](double twips) { return std::clamp(pixels(twips), 8, largestFrame); };
    QImage frame(goal.isEmpty() ? QSize(48, 48) : QSize(side(goal.width()), side(goal.height())),
                 QImage::Format_ARGB32_Premultiplied);
    frame.fill(Qt::transparent);
    QPainter painter(&frame);
    painter.setPen(Qt::gray);
    const QRect border = frame.rect().adjusted(0, 0, -1, -1);
    painter.drawRect(border);
    painter.drawLine(border.topLeft(), border.bottomRight());
    painter.drawLine(border.topRight(), border.bottomLeft());
    return frame;
}

/// Decodes a picture; null when it is damaged, or larger than `mostPixels`.
QImage decode(QByteArray data, qint64 mostPixels)
{
    QBuffer buffer(&data);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (!size.isValid() || qint64{size.width()} * size.height() > mostPixels)
        return {};
    return reader.read();
}

QByteArray identityOf(const DocumentPicture &picture)
{
    QCryptographicHash hash(QCryptographicHash::Sha1);
    hash.addData(picture.data);
    hash.addData(QByteArray::number(picture.goal.width()) + 'x' + QByteArray::number(picture.goal.height()));
    return hash.result().toHex();
}

} // namespace

int rawHash(const QByteArray &octets)
{
    return static_cast<int>(qHash(octets, 0) & 0x7FFFFFFF);
}

RichTextDocument::RichTextDocument(QObject *parent) : QTextDocument(parent), m_decoded(decodedKilobytes)
{
    QTextOption option = defaultTextOption();
    option.setTabStopDistance(tabStopDistance);
    setDefaultTextOption(option);
}

QString RichTextDocument::addPicture(const DocumentPicture &picture)
{
    const QString name = QStringLiteral("vandrel-picture:") + QString::fromLatin1(identityOf(picture));
    m_pictures.insert(name, picture);
    return name;
}

const DocumentPicture *RichTextDocument::picture(const QString &name) const
{
    const auto found = m_pictures.constFind(name);
    return found != m_pictures.constEnd() ? &*found : nullptr;
}

QVariant RichTextDocument::loadResource(int type, const QUrl &name)
{
    if (type != ImageResource)
        return {};
    const QString key = name.toString();
    if (const QImage *known = m_decoded.object(key))
        return *known;
    const DocumentPicture *found = picture(key);
    QImage image = found ? decode(found->data, maximumPicturePixels) : QImage();
    // The toolkit would look for a file of that name if it got nothing.
    if (image.isNull())
        image = frameOf(found ? found->goal : QSizeF());
    m_decoded.insert(key, new QImage(image), static_cast<qsizetype>(image.sizeInBytes() / 1024 + 1));
    return image;
}

} // namespace vandrel
