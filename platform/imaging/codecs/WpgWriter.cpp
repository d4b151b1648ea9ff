#include "platform/imaging/codecs/WpgWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QCoreApplication>

#include "platform/imaging/codecs/Encoding.h"
#include "platform/imaging/codecs/PackedRows.h"
#include "platform/imaging/codecs/PictureFailure.h"

namespace vandrel {

namespace {

constexpr int longestSide = 32767;
/// The unit of positions and sizes.
constexpr int unitsPerInch = 1200;
constexpr int usualDotsPerInch = 75;

bool isBlackAndWhite(const Palette &palette)
{
    return palette.size() == 2 && palette[0] == Colour{0, 0, 0} && palette[1] == Colour{255, 255, 255};
}

std::uint32_t dotsPerInch(double resolution)
{
    return resolution >= 1 ? static_cast<std::uint32_t>(std::clamp(std::round(resolution), 1.0, 65535.0))
                           : usualDotsPerInch;
}

std::uint32_t inUnits(int pixels, std::uint32_t dots)
{
    return static_cast<std::uint32_t>(
        std::min<std::int64_t>(std::int64_t{pixels} * unitsPerInch / dots, longestSide));
}

void writeFileHeader(OctetWriter &out, int version)
{
    constexpr std::uint32_t firstRecord = 16;
    out.octet(0xFF);
    out.octet('W');
    out.octet('P');
    out.octet('C');
    out.u32(firstRecord);
    out.octet(0x01);
    out.octet(0x16);
    out.octet(version);
    out.octet(0);
    out.u16(0);
    out.u16(0);
}

void writeLength(OctetWriter &out, std::uint32_t length)
{
    if (length < 0xFF) {
        out.octet(static_cast<int>(length));
        return;
    }
    out.octet(0xFF);
    if (length < 0x8000) {
        out.u16(length);
        return;
    }
    out.u16(0x8000 | length >> 16);
    out.u16(length & 0xFFFF);
}

/// Turns rows into runs and literals of units of that many octets. Version 1 counts octets, version 2 units; both begin
/// each row anew, and neither uses the codes for whole rows, which some readers take for damage.
template<std::ptrdiff_t Unit>
class RunWriter
{
public:
    /// `to` has room for the runs: a count to every other unit at most.
    RunWriter(int version, std::uint8_t *to) : m_version(version), m_to(to) { }

    void addRow(const Octets &row)
    {
        const std::uint8_t *end = row.data() + row.size();
        for (const std::uint8_t *from = row.data(); from != end;) {
            const std::uint8_t *stop = from + std::min(longest() * Unit, end - from);
            const std::uint8_t *next = endOfRun(from, stop);
            if (next - from > Unit) {
                addUnits(0x80, next - from, from, Unit);
            } else {
                next = endOfLiteral(next, stop, end);
                addUnits(0, next - from, from, next - from);
            }
            from = next;
        }
    }

    std::uint8_t *end() const { return m_to; }

private:
    /// Version 2 has codes from 7Dh on for other things.
    std::ptrdiff_t longest() const { return m_version == 1 ? 0x7F : 0x7D; }

    static bool isRepeated(const std::uint8_t *unit) { return std::equal(unit, unit + Unit, unit + Unit); }

    static const std::uint8_t *endOfRun(const std::uint8_t *from, const std::uint8_t *stop)
    {
        while (from + Unit != stop && isRepeated(from))
            from += Unit;
        return from + Unit;
    }

    /// Where the next run of three or more begins, the shortest that is worth a code of its own.
    static const std::uint8_t *
    endOfLiteral(const std::uint8_t *from, const std::uint8_t *stop, const std::uint8_t *end)
    {
        while (from != stop && !(end - from >= 3 * Unit && isRepeated(from) && isRepeated(from + Unit)))
            from += Unit;
        return from;
    }

    void addUnits(int mark, std::ptrdiff_t counted, const std::uint8_t *from, std::ptrdiff_t octets)
    {
        const std::ptrdiff_t count = counted / Unit;
        *m_to++ = static_cast<std::uint8_t>(mark | (m_version == 1 ? count : count - 1));
        m_to = std::copy_n(from, octets, m_to);
    }

    int m_version;
    std::uint8_t *m_to;
};

void takeRow(const ConstPixelView &view, int y, int bits, Octets &row)
{
    const std::uint8_t *from = view.row(y);
    if (bits <= 8) {
        packRow(from, bits, view.width, row.data());
        return;
    }
    for (std::size_t at = 0; at < row.size(); at += 3, from += view.channels) {
        row[at] = from[2];
        row[at + 1] = from[1];
        row[at + 2] = from[0];
    }
}

template<std::ptrdiff_t Unit>
Octets runsOf(const ConstPixelView &view, int version, int bits, int first, int end)
{
    Octets row(static_cast<std::size_t>(packedLength(view.width, bits)));
    Octets code(static_cast<std::size_t>(end - first) * row.size() * 2);
    RunWriter<Unit> runs(version, code.data());
    for (int y = first; y < end; ++y) {
        takeRow(view, y, bits, row);
        runs.addRow(row);
    }
    code.resize(static_cast<std::size_t>(runs.end() - code.data()));
    return code;
}

/// The pixels of a bitmap record.
void writeRuns(const Raster &picture, int version, int bits, OctetWriter &out, const FileProgress &progress)
{
    const ConstPixelView view = picture.view();
    if (bits == 24) {
        // What a unit is.
        out.octet(0x7D);
        out.octet(3);
    }
    writeBands(
        view.width, view.height,
        [&](int first, int end) {
            return bits == 24 ? runsOf<3>(view, version, bits, first, end)
                              : runsOf<1>(view, version, bits, first, end);
        },
        out, progress);
}

/// A record whose length shows when it is written. Lengths have four octets here, however small they turn out.
class LongRecord
{
public:
    explicit LongRecord(OctetWriter &out) : m_out(out), m_lengthAt(out.position() + 1)
    {
        m_out.octet(0xFF);
        m_out.u32(0);
    }

    /// Ends the record. Raises PictureFailure where its length cannot be said.
    void end()
    {
        const qint64 position = m_out.position();
        const qint64 length = position - m_lengthAt - 4;
        if (length > 0x7FFF'FFFF)
            throw PictureFailure(QCoreApplication::translate(
                "PictureFiles", "cannot be a WPG file: it would be too large. Save it in another format."));
        m_out.seek(m_lengthAt);
        m_out.u16(static_cast<std::uint32_t>(0x8000 | length >> 16));
        m_out.u16(static_cast<std::uint32_t>(length & 0xFFFF));
        m_out.seek(position);
    }

private:
    OctetWriter &m_out;
    qint64 m_lengthAt;
};

void writePalette(OctetWriter &out, const Palette &palette, int octetsPerColour)
{
    writeLength(out,
                static_cast<std::uint32_t>(4 + palette.size() * static_cast<std::size_t>(octetsPerColour)));
    out.u16(0);
    out.u16(static_cast<std::uint32_t>(palette.size()));
    for (const Colour colour : palette) {
        out.octet(colour.red);
        out.octet(colour.green);
        out.octet(colour.blue);
        if (octetsPerColour == 4)
            out.octet(0);
    }
}

void writeVersion1(const Raster &picture, OctetWriter &out, const FileProgress &progress)
{
    const std::uint32_t across = dotsPerInch(picture.resolution().horizontal);
    const std::uint32_t down = dotsPerInch(picture.resolution().vertical);
    writeFileHeader(out, 1);
    out.octet(0x0F);
    writeLength(out, 6);
    out.octet(1);
    out.octet(0);
    out.u16(inUnits(picture.width(), across));
    out.u16(inUnits(picture.height(), down));
    out.octet(0x0E);
    writePalette(out, picture.palette(), 3);
    out.octet(0x0B);
    LongRecord record(out);
    out.u16(static_cast<std::uint32_t>(picture.width()));
    out.u16(static_cast<std::uint32_t>(picture.height()));
    out.u16(static_cast<std::uint32_t>(picture.bitsPerPixel()));
    out.u16(across);
    out.u16(down);
    writeRuns(picture, 1, picture.bitsPerPixel(), out, progress);
    record.end();
    out.octet(0x10);
    out.octet(0);
}

void startRecord2(OctetWriter &out, int type)
{
    out.octet(0x04);
    out.octet(type);
    out.octet(0);
}

void writeBox(OctetWriter &out, std::uint32_t right, std::uint32_t bottom)
{
    out.u16(0);
    out.u16(0);
    out.u16(right);
    out.u16(bottom);
}

void writeVersion2(const Raster &picture, OctetWriter &out, const FileProgress &progress)
{
    const int bits = picture.isIndexed() ? picture.bitsPerPixel() : 24;
    const std::uint32_t across = dotsPerInch(picture.resolution().horizontal);
    const std::uint32_t down = dotsPerInch(picture.resolution().vertical);
    const std::uint32_t right = inUnits(picture.width(), across);
    const std::uint32_t bottom = inUnits(picture.height(), down);
    writeFileHeader(out, 2);
    startRecord2(out, 0x01);
    writeLength(out, 23);
    out.u16(unitsPerInch);
    out.u16(unitsPerInch);
    out.octet(0);
    writeBox(out, right, bottom);
    writeBox(out, right, bottom);
    out.u16(0);
    if (picture.isIndexed()) {
        startRecord2(out, 0x0C);
        writePalette(out, picture.palette(), 4);
    }
    startRecord2(out, 0x1B);
    writeLength(out, 14);
    out.u16(0);
    writeBox(out, right, bottom);
    out.u16(across);
    out.u16(down);
    startRecord2(out, 0x0E);
    LongRecord record(out);
    out.u16(static_cast<std::uint32_t>(picture.width()));
    out.u16(static_cast<std::uint32_t>(picture.height()));
    out.octet(bits == 1 ? 1 : bits == 4 ? 3 : bits == 8 ? 4 : 8);
    out.octet(1);
    writeRuns(picture, 2, bits, out, progress);
    record.end();
    startRecord2(out, 0x02);
    out.octet(0);
}

} // namespace

void writeWpg(const Raster &picture, QIODevice &device, const FileProgress &progress)
{
    if (picture.width() > longestSide || picture.height() > longestSide)
        throw PictureFailure(QCoreApplication::translate(
            "PictureFiles",
            "cannot be a WPG file: those hold at most 32767 pixels a side. Save it in another format."));
    OctetWriter out(device);
    const bool needsColours = picture.bitsPerPixel() == 1 && !isBlackAndWhite(picture.palette());
    if (picture.isIndexed() && !needsColours)
        writeVersion1(picture, out, progress);
    else
        writeVersion2(picture, out, progress);
}

} // namespace vandrel
