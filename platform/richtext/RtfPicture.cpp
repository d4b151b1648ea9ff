#include "platform/richtext/RtfPicture.h"

#include <algorithm>
#include <array>

#include <QBuffer>
#include <QImageReader>
#include <QtEndian>

#include "platform/richtext/RtfFormatting.h"
#include "platform/richtext/RtfTokenizer.h"
#include "platform/richtext/RtfWords.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

enum class Kind { Unknown, Png, Jpeg, Bitmap, Metafile };

/// What the group's control words say.
struct Description {
    Kind kind = Kind::Unknown;
    int width = 0; ///< \picw: pixels, or hundredths of a millimetre for a metafile
    int height = 0;
    int goalWidth = 0; ///< twips
    int goalHeight = 0;
    int scaleX = 100; ///< per cent
    int scaleY = 100;
};

constexpr int defaultSide = 720;
constexpr int largestScale = 10'000;

void apply(Description &picture, const RtfToken &token)
{
    switch (rtfWord(token.text).word) {
    case RtfWord::Pngblip:
        picture.kind = Kind::Png;
        break;
    case RtfWord::Jpegblip:
        picture.kind = Kind::Jpeg;
        break;
    case RtfWord::Dibitmap:
        picture.kind = Kind::Bitmap;
        break;
    case RtfWord::Emfblip:
    case RtfWord::Wmetafile:
    case RtfWord::Macpict:
    case RtfWord::Pmmetafile:
        picture.kind = Kind::Metafile;
        break;
    case RtfWord::Picw:
        picture.width = token.number;
        break;
    case RtfWord::Pich:
        picture.height = token.number;
        break;
    case RtfWord::Picwgoal:
        picture.goalWidth = token.number;
        break;
    case RtfWord::Pichgoal:
        picture.goalHeight = token.number;
        break;
    case RtfWord::Picscalex:
        picture.scaleX = std::clamp(token.number, 1, largestScale);
        break;
    case RtfWord::Picscaley:
        picture.scaleY = std::clamp(token.number, 1, largestScale);
        break;
    default:
        break;
    }
}

/// Collects the octets written as pairs of hexadecimal digits; digits may be split over tokens.
class HexOctets
{
public:
    void take(QByteArrayView digits) { m_digits.append(digits); }
    void takeBinary(QByteArrayView octets) { m_octets.append(octets); }

    QByteArray octets() const { return m_octets.isEmpty() ? QByteArray::fromHex(m_digits) : m_octets; }

private:
    QByteArray m_digits;
    QByteArray m_octets;
};

/// Size of the file header before a device-independent bitmap.
constexpr int fileHeaderSize = 14;

/// How far the pixels of a device-independent bitmap are from its start; 0 for a bitmap that makes no sense.
qint64 pixelOffset(const QByteArray &bitmap)
{
    if (bitmap.size() < 16)
        return 0;
    const auto *data = reinterpret_cast<const uchar *>(bitmap.constData());
    const auto headerSize = qFromLittleEndian<quint32>(data);
    if (headerSize == 12) {
        const auto depth = qFromLittleEndian<quint16>(data + 10);
        return 12 + (depth <= 8 ? 3 * (qint64{1} << depth) : 0);
    }
    if (headerSize < 40 || headerSize > 1024 || bitmap.size() < 40)
        return 0;
    const auto depth = qFromLittleEndian<quint16>(data + 14);
    const auto compression = qFromLittleEndian<quint32>(data + 16);
    const auto used = qFromLittleEndian<quint32>(data + 32);
    const qint64 masks = compression == 3 && headerSize == 40 ? 12 : 0;
    const qint64 palette = used > 0 ? used : (depth <= 8 ? qint64{1} << depth : 0);
    return palette <= 65'536 ? headerSize + masks + 4 * palette : 0;
}

/// The bitmap as a BMP file; empty when it makes no sense.
QByteArray toBmp(const QByteArray &bitmap)
{
    const qint64 offset = pixelOffset(bitmap);
    if (offset <= 0 || offset >= bitmap.size())
        return {};
    QByteArray file(fileHeaderSize, '\0');
    auto *header = reinterpret_cast<uchar *>(file.data());
    header[0] = 'B';
    header[1] = 'M';
    qToLittleEndian<quint32>(static_cast<quint32>(bitmap.size() + fileHeaderSize), header + 2);
    qToLittleEndian<quint32>(static_cast<quint32>(offset + fileHeaderSize), header + 10);
    return file + bitmap;
}

QByteArray showableData(Kind kind, const QByteArray &octets)
{
    switch (kind) {
    case Kind::Png:
    case Kind::Jpeg:
        return octets;
    case Kind::Bitmap:
        return toBmp(octets);
    case Kind::Metafile:
        return {};
    case Kind::Unknown:
        break;
    }
    // Some writers forget to name the kind; the data tells.
    const bool tells = octets.startsWith("\x89PNG") || octets.startsWith("\xFF\xD8\xFF");
    return tells ? octets : QByteArray();
}

/// The size of the encoded picture in pixels, from its header alone.
QSize encodedSize(QByteArray data)
{
    QBuffer buffer(&data);
    return QImageReader(&buffer).size();
}

double side(int goal, int scale, int stated, double twipsPerUnit, int encoded)
{
    double twips = goal > 0 ? goal
        : stated > 0        ? stated * twipsPerUnit
        : encoded > 0       ? encoded * twipsPerPixel
                            : 0;
    if (twips <= 0)
        twips = defaultSide;
    return std::clamp(twips * scale / 100, 1.0, static_cast<double>(rtfLongestTwips));
}

QSizeF sizeOf(const Description &picture, const QByteArray &data)
{
    constexpr double twipsPerHundredthMillimetre = 1440 / 2540.0;
    const double unit = picture.kind == Kind::Metafile ? twipsPerHundredthMillimetre : twipsPerPixel;
    const bool isStated
        = (picture.goalWidth > 0 || picture.width > 0) && (picture.goalHeight > 0 || picture.height > 0);
    const QSize encoded = isStated || data.isEmpty() ? QSize() : encodedSize(data);
    return {side(picture.goalWidth, picture.scaleX, picture.width, unit, encoded.width()),
            side(picture.goalHeight, picture.scaleY, picture.height, unit, encoded.height())};
}

} // namespace

DocumentPicture readRtfPicture(QByteArrayView group)
{
    Description description;
    HexOctets octets;
    RtfTokenizer tokens(group);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::GroupOpen)
            tokens.skipGroup();
        else if (token.type == RtfToken::Type::Word)
            apply(description, token);
        else if (token.type == RtfToken::Type::Text)
            octets.take(token.text);
        else if (token.type == RtfToken::Type::Binary)
            octets.takeBinary(token.text);
    }
    DocumentPicture picture;
    picture.data = showableData(description.kind, octets.octets());
    picture.goal = sizeOf(description, picture.data);
    return picture;
}

} // namespace vandrel
