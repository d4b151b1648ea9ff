#include "platform/imaging/codecs/WpgWriter.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <QCoreApplication>

#include "platform/imaging/codecs/OctetWriter.h"
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

/// Turns rows into runs and literals. Version 1 counts octets, version 2 units; both begin each row anew,
/// and neither uses the codes for whole rows, which some readers take for damage.
class RunWriter
{
public:
    RunWriter(int version, int unit) : m_version(version), m_unit(static_cast<std::size_t>(unit)) { }

    void addRow(const std::vector<std::uint8_t> &row)
    {
        const std::size_t units = row.size() / m_unit;
        for (std::size_t at = 0; at < units;) {
            const std::size_t run = runAt(row, at, units);
            if (run > 1) {
                addRun(row, at, run);
                at += run;
                continue;
            }
            std::size_t end = at + 1;
            while (end < units && end - at < longest() && runAt(row, end, units) < 3)
                ++end;
            addLiteral(row, at, end - at);
            at = end;
        }
    }

    std::vector<std::uint8_t> code;

private:
    /// Version 2 has codes from 7Dh on for other things.
    std::size_t longest() const { return m_version == 1 ? 0x7F : 0x7D; }

    std::size_t runAt(const std::vector<std::uint8_t> &row, std::size_t at, std::size_t units) const
    {
        std::size_t count = 1;
        const auto first = row.begin() + static_cast<std::ptrdiff_t>(at * m_unit);
        while (count < longest() && at + count < units
               && std::equal(first, first + static_cast<std::ptrdiff_t>(m_unit),
                             first + static_cast<std::ptrdiff_t>(count * m_unit)))
            ++count;
        return count;
    }

    void addCount(int mark, std::size_t count)
    {
        const std::size_t written = m_version == 1 ? count : count - 1;
        code.push_back(static_cast<std::uint8_t>(static_cast<std::size_t>(mark) | written));
    }

    void addUnits(const std::vector<std::uint8_t> &row, std::size_t at, std::size_t count)
    {
        const auto first = row.begin() + static_cast<std::ptrdiff_t>(at * m_unit);
        code.insert(code.end(), first, first + static_cast<std::ptrdiff_t>(count * m_unit));
    }

    void addRun(const std::vector<std::uint8_t> &row, std::size_t at, std::size_t count)
    {
        addCount(0x80, count);
        addUnits(row, at, 1);
    }

    void addLiteral(const std::vector<std::uint8_t> &row, std::size_t at, std::size_t count)
    {
        addCount(0, count);
        addUnits(row, at, count);
    }

    int m_version;
    std::size_t m_unit;
};

std::vector<std::uint8_t> runsOf(const Raster &picture, int version, int bits)
{
    RunWriter runs(version, bits == 24 ? 3 : 1);
    if (bits == 24)
        runs.code = {0x7D, 3};
    const ConstPixelView view = picture.view();
    std::vector<std::uint8_t> row(static_cast<std::size_t>(packedLength(view.width, bits)));
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t *from = view.row(y);
        if (bits <= 8) {
            packRow(from, bits, view.width, row.data());
        } else {
            for (std::size_t x = 0; x < static_cast<std::size_t>(view.width); ++x, from += view.channels) {
                row[x * 3] = from[2];
                row[x * 3 + 1] = from[1];
                row[x * 3 + 2] = from[0];
            }
        }
        runs.addRow(row);
    }
    return std::move(runs.code);
}

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

void writeVersion1(const Raster &picture, OctetWriter &out)
{
    const std::uint32_t across = dotsPerInch(picture.resolution().horizontal);
    const std::uint32_t down = dotsPerInch(picture.resolution().vertical);
    const std::vector<std::uint8_t> code = runsOf(picture, 1, picture.bitsPerPixel());
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
    writeLength(out, static_cast<std::uint32_t>(10 + code.size()));
    out.u16(static_cast<std::uint32_t>(picture.width()));
    out.u16(static_cast<std::uint32_t>(picture.height()));
    out.u16(static_cast<std::uint32_t>(picture.bitsPerPixel()));
    out.u16(across);
    out.u16(down);
    out.write(code.data(), static_cast<qint64>(code.size()));
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

void writeVersion2(const Raster &picture, OctetWriter &out)
{
    const int bits = picture.isIndexed() ? picture.bitsPerPixel() : 24;
    const std::uint32_t across = dotsPerInch(picture.resolution().horizontal);
    const std::uint32_t down = dotsPerInch(picture.resolution().vertical);
    const std::uint32_t right = inUnits(picture.width(), across);
    const std::uint32_t bottom = inUnits(picture.height(), down);
    const std::vector<std::uint8_t> code = runsOf(picture, 2, bits);
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
    writeLength(out, static_cast<std::uint32_t>(6 + code.size()));
    out.u16(static_cast<std::uint32_t>(picture.width()));
    out.u16(static_cast<std::uint32_t>(picture.height()));
    out.octet(bits == 1 ? 1 : bits == 4 ? 3 : bits == 8 ? 4 : 8);
    out.octet(1);
    out.write(code.data(), static_cast<qint64>(code.size()));
    startRecord2(out, 0x02);
    out.octet(0);
}

} // namespace

void writeWpg(const Raster &picture, QIODevice &device)
{
    if (picture.width() > longestSide || picture.height() > longestSide)
        throw PictureFailure(QCoreApplication::translate(
            "PictureFiles",
            "cannot be a WPG file: those hold at most 32767 pixels a side. Save it in another format."));
    OctetWriter out(device);
    const bool needsColours = picture.bitsPerPixel() == 1 && !isBlackAndWhite(picture.palette());
    if (picture.isIndexed() && !needsColours)
        writeVersion1(picture, out);
    else
        writeVersion2(picture, out);
}

} // namespace vandrel
