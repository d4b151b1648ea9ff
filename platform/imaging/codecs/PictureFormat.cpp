#include "platform/imaging/codecs/PictureFormat.h"

#include <QtEndian>

namespace vandrel {

namespace {

quint32 u16(QByteArrayView octets, qsizetype at)
{
    return octets.size() >= at + 2 ? qFromLittleEndian<quint16>(octets.data() + at) : 0;
}

quint32 u32(QByteArrayView octets, qsizetype at)
{
    return octets.size() >= at + 4 ? qFromLittleEndian<quint32>(octets.data() + at) : 0;
}

/// A bitmap's own header: its length, one plane, and a depth that there is.
bool isBitmapHeader(QByteArrayView octets)
{
    const quint32 length = u32(octets, 0);
    const bool isCore = length == 12;
    if (!isCore && (length < 16 || length > 124))
        return false;
    const quint32 planes = u16(octets, isCore ? 8 : 12);
    const quint32 bits = u16(octets, isCore ? 10 : 14);
    return planes == 1 && bits >= 1 && bits <= 32;
}

/// A metafile with the header that places it, or without.
bool isMetafile(QByteArrayView octets)
{
    if (u32(octets, 0) == 0x9AC6CDD7)
        return true;
    const quint32 kind = u16(octets, 0);
    const quint32 version = u16(octets, 4);
    return (kind == 1 || kind == 2) && u16(octets, 2) == 9 && (version == 0x0100 || version == 0x0300);
}

bool isPcx(QByteArrayView octets)
{
    if (octets.size() < 4 || octets[0] != 0x0A)
        return false;
    const auto version = static_cast<unsigned char>(octets[1]);
    const auto bits = static_cast<unsigned char>(octets[3]);
    return version <= 5 && (octets[2] == 0 || octets[2] == 1)
        && (bits == 1 || bits == 2 || bits == 4 || bits == 8);
}

} // namespace

PictureFormat pictureFormat(QByteArrayView beginning, QStringView extension)
{
    if (beginning.startsWith("\xFF\xD8\xFF"))
        return PictureFormat::Jpeg;
    if (beginning.startsWith(QByteArrayView("II*\0", 4)) || beginning.startsWith(QByteArrayView("MM\0*", 4))
        || beginning.startsWith(QByteArrayView("II+\0", 4))
        || beginning.startsWith(QByteArrayView("MM\0+", 4)))
        return PictureFormat::Tiff;
    if (beginning.startsWith("\xFFWPC"))
        return PictureFormat::Wpg;
    if (beginning.startsWith("BM"))
        return PictureFormat::Bmp;
    if (isMetafile(beginning))
        return PictureFormat::Wmf;
    if (isBitmapHeader(beginning))
        return PictureFormat::Dib;
    if (isPcx(beginning))
        return PictureFormat::Pcx;
    // A file of a kind whose beginning is damaged is still one of that kind, so that its reader says what is wrong.
    const auto is
        = [extension](QStringView other) { return extension.compare(other, Qt::CaseInsensitive) == 0; };
    if (is(u"wmf"))
        return PictureFormat::Wmf;
    return is(u"dib") ? PictureFormat::Dib : PictureFormat::Unknown;
}

} // namespace vandrel
