#include "platform/imaging/codecs/WpgReader.h"

#include <algorithm>

#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"
#include "platform/imaging/codecs/WpgBits.h"

namespace vandrel {

namespace {

/// No file has as many records; one that claims so is read no further.
constexpr int mostRecords = 100'000;

struct Record {
    int type = 0;
    qint64 begin = 0;
    qint64 end = 0;
};

/// A length of one, two or four octets.
std::uint32_t readLength(OctetReader &file)
{
    const int first = file.octet();
    if (first != 0xFF)
        return static_cast<std::uint32_t>(first);
    const std::uint32_t second = file.u16();
    if ((second & 0x8000) == 0)
        return second;
    return (second & 0x7FFF) << 16 | file.u16();
}

/// What of the file's bitmap counts so far.
class WpgBitmaps
{
public:
    WpgBitmaps(OctetReader &file, const DecodeRequest &request) : m_file(file), m_request(request) { }

    void readPalette(bool withFourth)
    {
        const std::size_t first = m_file.u16();
        const std::size_t count = m_file.u16();
        if (m_palette.empty())
            m_palette = startPalette();
        for (std::size_t number = first; number < first + count && number < 256 && !m_file.ended();
             ++number) {
            Colour &colour = m_palette[number];
            colour.red = m_file.octet();
            colour.green = m_file.octet();
            colour.blue = m_file.octet();
            if (withFourth)
                m_file.skip(1);
        }
    }

    void readVersion1(const Record &record)
    {
        const int width = m_file.u16();
        const int height = m_file.u16();
        const int bits = m_file.u16();
        const double horizontal = m_file.u16();
        m_resolution = {horizontal, static_cast<double>(m_file.u16())};
        if (bits != 1 && bits != 2 && bits != 4 && bits != 8)
            throw PictureFailure(pictureText("is a WPG file with a bitmap of a kind that cannot be read."));
        take(width, height, bits, record, readWpg1Runs);
    }

    void readVersion2(const Record &record)
    {
        const int width = m_file.u16();
        const int height = m_file.u16();
        const int format = m_file.octet();
        const int compression = m_file.octet();
        const int bits = bitsOfFormat(format);
        if (bits == 0 || compression > 1)
            throw PictureFailure(pictureText("is a WPG file with a bitmap of a kind that cannot be read."));
        take(width, height, bits, record, compression == 1 ? readWpg2Runs : readPlain);
    }

    void readVersion2Box()
    {
        m_file.skip(2 + 8);
        const double horizontal = m_file.u16();
        m_resolution = {horizontal, static_cast<double>(m_file.u16())};
    }

    bool isEmpty() const { return m_best.picture.isNull(); }
    DecodedPicture best() const { return m_best; }

private:
    using RunReader = void (*)(OctetReader &, qint64, PackedRows &);

    static int bitsOfFormat(int format)
    {
        switch (format) {
        case 1:
            return 1;
        case 2:
            return 2;
        case 3:
            return 4;
        case 4:
            return 8;
        case 8:
            return 24;
        default:
            return 0;
        }
    }

    static void readPlain(OctetReader &file, qint64 end, PackedRows &rows)
    {
        for (qint64 left = std::min(end, file.size()) - file.position(); left > 0 && !rows.isFull(); --left)
            rows.put(file.octet());
    }

    void take(int width, int height, int bits, const Record &record, RunReader read)
    {
        const int depth = bits == 2 ? 4 : bits;
        const std::int64_t weight = std::int64_t{width} * height * bits;
        if (weight <= m_bestWeight)
            return;
        // Three octets can repeat a row 255 times, so that a small file may well be a large picture.
        constexpr std::int64_t mostPerOctet = 100'000;
        const auto pixels
            = pixelsForClaim(width, height, channelsOfDepth(depth), m_file.size(), mostPerOctet);
        const PixelView view = pixels->view();
        PackedRows rows(packedLength(width, bits), height, [&](int y, const std::uint8_t *row) {
            atRow(m_request, y, height);
            unpack(row, bits, view.width, view.row(y));
        });
        read(m_file, record.end, rows);
        rows.finish();
        checkCancelled(m_request);
        m_bestWeight = weight;
        m_best.damage = rows.isFull() ? QString() : endsEarly(rows.rowsRead(), height);
        m_best.picture = Raster(pixels, depth, depth <= 8 ? paletteFor(bits) : Palette(), m_resolution);
    }

    static void unpack(const std::uint8_t *from, int bits, int width, std::uint8_t *to)
    {
        if (bits <= 8) {
            unpackRow(from, bits, width, to);
            return;
        }
        for (int x = 0; x < width; ++x, from += 3, to += 3) {
            to[0] = from[2];
            to[1] = from[1];
            to[2] = from[0];
        }
    }

    /// The sixteen usual colours and grays behind.
    static Palette startPalette()
    {
        Palette palette = sixteenColours();
        const Palette grays = grayPalette(256);
        palette.insert(palette.end(), grays.begin() + 16, grays.end());
        return palette;
    }

    Palette paletteFor(int bits) const
    {
        if (bits == 1 && m_palette.empty())
            return {{0, 0, 0}, {255, 255, 255}};
        return m_palette.empty() ? startPalette() : m_palette;
    }

    OctetReader &m_file;
    const DecodeRequest &m_request;
    Palette m_palette;
    Resolution m_resolution;
    DecodedPicture m_best;
    std::int64_t m_bestWeight = 0;
};

/// What to do with a record.
enum class RecordUse { Skip, Palette, BitmapBox, Bitmap, RotatedBitmap, Text, Drawing, End };

RecordUse useInVersion1(int type)
{
    switch (type) {
    case 0x04:
    case 0x05:
    case 0x06:
    case 0x07:
    case 0x08:
    case 0x09:
    case 0x13:
        return RecordUse::Drawing;
    case 0x0C:
    case 0x18:
        return RecordUse::Text;
    case 0x0B:
        return RecordUse::Bitmap;
    case 0x0E:
        return RecordUse::Palette;
    case 0x10:
        return RecordUse::End;
    case 0x14:
        return RecordUse::RotatedBitmap;
    default:
        return RecordUse::Skip;
    }
}

RecordUse useInVersion2(int type)
{
    switch (type) {
    case 0x02:
        return RecordUse::End;
    case 0x0C:
        return RecordUse::Palette;
    case 0x0E:
        return RecordUse::Bitmap;
    case 0x1B:
        return RecordUse::BitmapBox;
    case 0x15:
    case 0x16:
    case 0x17:
    case 0x18:
    case 0x19:
    case 0x1A:
        return RecordUse::Drawing;
    case 0x1C:
    case 0x1D:
    case 0x1E:
        return RecordUse::Text;
    default:
        return RecordUse::Skip;
    }
}

Record readRecord(OctetReader &file, int version)
{
    Record record;
    if (version == 1) {
        record.type = file.octet();
    } else {
        file.skip(1);
        record.type = file.octet();
        readLength(file);
    }
    const qint64 length = readLength(file);
    record.begin = file.position();
    record.end = record.begin + length;
    return record;
}

/// Does one record; false for the last.
bool useRecord(OctetReader &file, const Record &record, int version, RecordUse use, WpgBitmaps &bitmaps)
{
    switch (use) {
    case RecordUse::Palette:
        bitmaps.readPalette(version == 2);
        break;
    case RecordUse::BitmapBox:
        bitmaps.readVersion2Box();
        break;
    case RecordUse::RotatedBitmap:
        // The angle and the corners of where it stands on the page come first.
        file.skip(10);
        bitmaps.readVersion1(record);
        break;
    case RecordUse::Bitmap:
        if (version == 1)
            bitmaps.readVersion1(record);
        else
            bitmaps.readVersion2(record);
        break;
    case RecordUse::End:
        return false;
    case RecordUse::Skip:
    case RecordUse::Text:
    case RecordUse::Drawing:
        break;
    }
    return true;
}

} // namespace

std::optional<DecodedPicture> readWpg(QIODevice &device, const DecodeRequest &request)
{
    OctetReader file(device);
    file.seek(4);
    const qint64 firstRecord = file.u32();
    file.skip(2);
    const int version = file.octet();
    if (version != 1 && version != 2)
        throw PictureFailure(pictureText("is a WPG file of an unknown version."));
    file.seek(firstRecord);
    WpgBitmaps bitmaps(file, request);
    // Words under a bitmap do not make it a drawing; without one they do.
    bool hasText = false;
    for (int count = 0; count < mostRecords && file.left() > 0; ++count) {
        const Record record = readRecord(file, version);
        const RecordUse use = version == 1 ? useInVersion1(record.type) : useInVersion2(record.type);
        if (use == RecordUse::Drawing)
            return {};
        hasText = hasText || use == RecordUse::Text;
        if (file.ended() || !useRecord(file, record, version, use, bitmaps))
            break;
        file.seek(record.end);
    }
    if (bitmaps.isEmpty() && hasText)
        return {};
    if (bitmaps.isEmpty())
        throw PictureFailure(pictureText("holds no picture."));
    return bitmaps.best();
}

} // namespace vandrel
