#include "platform/imaging/codecs/ExifOrientation.h"

#include "platform/imaging/raster/Turning.h"

namespace vandrel {

namespace {

/// Numbers in a block of either byte order; 0 beyond its end.
class ExifNumbers
{
public:
    explicit ExifNumbers(QByteArrayView exif) : m_exif(exif), m_isBigEndian(exif.startsWith("MM")) { }

    quint32 u16(qsizetype at) const
    {
        return m_isBigEndian ? octet(at) << 8 | octet(at + 1) : octet(at) | octet(at + 1) << 8;
    }
    quint32 u32(qsizetype at) const
    {
        return m_isBigEndian ? u16(at) << 16 | u16(at + 2) : u16(at) | u16(at + 2) << 16;
    }

private:
    quint32 octet(qsizetype at) const
    {
        return at >= 0 && at < m_exif.size() ? static_cast<quint8>(m_exif[at]) : 0;
    }

    QByteArrayView m_exif;
    bool m_isBigEndian;
};

} // namespace

int exifOrientation(QByteArrayView exif)
{
    constexpr quint32 orientationTag = 0x0112;
    constexpr qsizetype entryLength = 12;
    const ExifNumbers numbers(exif);
    if (!(exif.startsWith("II") || exif.startsWith("MM")) || numbers.u16(2) != 42)
        return 1;
    const auto directory = static_cast<qsizetype>(numbers.u32(4));
    const auto count = static_cast<qsizetype>(numbers.u16(directory));
    for (qsizetype index = 0; index < count; ++index) {
        const qsizetype entry = directory + 2 + index * entryLength;
        if (entry >= exif.size())
            return 1;
        if (numbers.u16(entry) == orientationTag) {
            const auto orientation = static_cast<int>(numbers.u16(entry + 8));
            return orientation >= 1 && orientation <= 8 ? orientation : 1;
        }
    }
    return 1;
}

Raster upright(const Raster &picture, int orientation)
{
    switch (orientation) {
    case 2:
        return mirroredSideways(picture);
    case 3:
        return turned(picture, 2);
    case 4:
        return turned(mirroredSideways(picture), 2);
    case 5:
        return turned(mirroredSideways(picture), 3);
    case 6:
        return turned(picture, 1);
    case 7:
        return turned(mirroredSideways(picture), 1);
    case 8:
        return turned(picture, 3);
    default:
        return picture;
    }
}

} // namespace vandrel
