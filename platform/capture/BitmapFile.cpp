#include "platform/capture/BitmapFile.h"

#include <algorithm>
#include <limits>

#include <QCoreApplication>
#include <QIODevice>
#include <QtEndian>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr qint64 fileHeaderSize = 14;
constexpr qint64 infoHeaderSize = 40;
constexpr qint64 headersSize = fileHeaderSize + infoHeaderSize;
constexpr quint16 bitsPerPixel = 24;
// 96 pixels per inch.
constexpr qint32 pixelsPerMetre = 3780;
constexpr int rowsAtOnce = 64;

class LittleEndian
{
public:
    template<typename Number>
    LittleEndian &operator<<(Number number)
    {
        const Number ordered = qToLittleEndian(number);
        m_octets.append(reinterpret_cast<const char *>(&ordered), sizeof ordered);
        return *this;
    }

    const QByteArray &octets() const { return m_octets; }

private:
    QByteArray m_octets;
};

qint64 rowSize(int width)
{
    return (qint64{width} * 3 + 3) / 4 * 4;
}

QByteArray headers(QSize size)
{
    const qint64 pixels = rowSize(size.width()) * size.height();
    if (size.isEmpty() || pixels > std::numeric_limits<quint32>::max() - headersSize)
        throw RuntimeError(error::InvalidPropertyValue,
                           QCoreApplication::translate(
                               "BitmapFile", "A picture of %1 x %2 pixels does not fit a bitmap file.")
                               .arg(size.width())
                               .arg(size.height()));
    LittleEndian octets;
    octets << quint8('B') << quint8('M') << static_cast<quint32>(headersSize + pixels) << quint32(0)
           << static_cast<quint32>(headersSize);
    octets << static_cast<quint32>(infoHeaderSize) << qint32(size.width()) << qint32(size.height())
           << quint16(1) << bitsPerPixel << quint32(0) << static_cast<quint32>(pixels) << pixelsPerMetre
           << pixelsPerMetre << quint32(0) << quint32(0);
    return octets.octets();
}

// Four pixels become three words; `to` has room for a whole row with its padding, which is zero already.
void packRow(const QRgb *from, int width, uchar *to)
{
    int x = 0;
    for (; x + 4 <= width; x += 4, to += 12) {
        const quint32 a = from[x] & 0xffffff;
        const quint32 b = from[x + 1] & 0xffffff;
        const quint32 c = from[x + 2] & 0xffffff;
        const quint32 d = from[x + 3];
        qToLittleEndian(a | b << 24, to);
        qToLittleEndian(b >> 8 | c << 16, to + 4);
        qToLittleEndian(c >> 16 | d << 8, to + 8);
    }
    for (; x < width; ++x) {
        *to++ = static_cast<uchar>(qBlue(from[x]));
        *to++ = static_cast<uchar>(qGreen(from[x]));
        *to++ = static_cast<uchar>(qRed(from[x]));
    }
}

} // namespace

bool writeBitmap(const QImage &picture, QIODevice &file, const std::function<bool()> &goOn)
{
    const QByteArray head = headers(picture.size());
    if (file.write(head) != head.size())
        return false;
    const qint64 row = rowSize(picture.width());
    QByteArray rows(static_cast<qsizetype>(row * rowsAtOnce), '\0');
    for (int below = picture.height(); below > 0; below -= rowsAtOnce) {
        const int count = std::min(below, rowsAtOnce);
        auto *const octets = reinterpret_cast<uchar *>(rows.data());
        for (int i = 0; i < count; ++i)
            packRow(reinterpret_cast<const QRgb *>(picture.constScanLine(below - 1 - i)), picture.width(),
                    octets + i * row);
        if (!goOn() || file.write(rows.constData(), count * row) != count * row)
            return false;
    }
    return true;
}

} // namespace vandrel
