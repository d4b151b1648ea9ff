#include "platform/imaging/operations/Dither.h"

#include <algorithm>
#include <array>
#include <memory>
#include <mutex>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/NearestColour.h"
#include "platform/imaging/operations/Rounding.h"
#include "platform/imaging/operations/ValueRows.h"

namespace vandrel {

namespace {

/// A pixel's levels as they are diffused: blue, green and red, or the brightness alone.
template<std::size_t Count>
using Levels = std::array<int, Count>;

/// Chooses among the colours of a palette.
class PaletteChooser
{
public:
    explicit PaletteChooser(const Palette &palette) : m_nearest(palette) { }

    static constexpr std::size_t colours = 3;
    static constexpr int octets = 1;

    static Levels<3> levels(const std::uint8_t *pixel) { return {pixel[0], pixel[1], pixel[2]}; }

    Levels<3> choose(const Levels<3> &wanted, std::uint8_t *to)
    {
        const std::uint8_t number = m_nearest.find(wanted[2], wanted[1], wanted[0]);
        *to = number;
        const Colour colour = m_nearest.palette()[number];
        return {colour.blue, colour.green, colour.red};
    }

private:
    NearestColour m_nearest;
};

/// Chooses among the grays of a palette by brightness.
class GrayChooser
{
public:
    explicit GrayChooser(const Palette &palette)
    {
        NearestColour nearest(palette);
        for (std::size_t level = 0; level < m_numbers.size(); ++level) {
            const auto gray = static_cast<int>(level);
            m_numbers[level] = nearest.find(gray, gray, gray);
            m_shown[level] = palette[m_numbers[level]].green;
        }
    }

    static constexpr std::size_t colours = 1;
    static constexpr int octets = 1;

    static Levels<1> levels(const std::uint8_t *pixel) { return {luma(pixel[2], pixel[1], pixel[0])}; }

    Levels<1> choose(const Levels<1> &wanted, std::uint8_t *to) const
    {
        const auto level = static_cast<std::size_t>(wanted[0]);
        *to = m_numbers[level];
        return {m_shown[level]};
    }

private:
    std::array<std::uint8_t, 256> m_numbers{};
    std::array<std::uint8_t, 256> m_shown{};
};

/// Chooses the nearest of 32 levels for each colour.
class FiveBitChooser
{
public:
    FiveBitChooser()
    {
        for (std::size_t level = 0; level < m_shown.size(); ++level)
            m_shown[level] = onFiveBits(static_cast<int>(level));
    }

    static constexpr std::size_t colours = 3;
    static constexpr int octets = 3;

    static Levels<3> levels(const std::uint8_t *pixel) { return {pixel[0], pixel[1], pixel[2]}; }

    Levels<3> choose(const Levels<3> &wanted, std::uint8_t *to) const
    {
        Levels<3> shown{};
        for (std::size_t colour = 0; colour < 3; ++colour) {
            to[colour] = m_shown[static_cast<std::size_t>(wanted[colour])];
            shown[colour] = to[colour];
        }
        return shown;
    }

private:
    std::array<std::uint8_t, 256> m_shown{};
};

/// The errors passed on to one row and the next, in sixteenths, with a pixel to spare on both sides.
template<std::size_t Count>
class ErrorRows
{
public:
    explicit ErrorRows(int width) : m_here((static_cast<std::size_t>(width) + 2) * Count), m_next(m_here) { }

    /// What the row above passed to the pixel x of this one, and where to write what is passed to the one below.
    const std::int16_t *here(int x) const { return m_here.data() + place(x); }
    std::int16_t *next(int x) { return m_next.data() + place(x); }
    void advance() { m_here.swap(m_next); }

private:
    static std::ptrdiff_t place(int x)
    {
        return (std::ptrdiff_t{x} + 1) * static_cast<std::ptrdiff_t>(Count);
    }

    std::vector<std::int16_t> m_here;
    std::vector<std::int16_t> m_next;
};

/// Sixteenths as whole levels, halves rounded up.
int wholeLevels(int sixteenths)
{
    return (sixteenths + 8) >> 4;
}

/// Where a row is done from, and which way.
struct Walk {
    int first;
    int forwards;
};

/// Some pixels of a picture in a row, `octets` each.
struct PixelRow {
    const std::uint8_t *pixels;
    int width;
    int octets;
};

/// Does the row y; `to` is the memory for its first pixel's result. The error of a pixel goes to the one after it by 7 sixteenths, and to the row below by 3 behind, 5
/// below and 1 ahead; what a pixel below gets from three is collected on the way, so that it is written once.
template<typename Chooser>
void diffuseRow(
    Chooser &chooser, ErrorRows<Chooser::colours> &errors, const PixelRow &row, int y, std::uint8_t *to)
{
    constexpr std::size_t colours = Chooser::colours;
    // Back and forth: always the same direction would draw worms.
    const Walk walk = y % 2 == 0 ? Walk{0, 1} : Walk{row.width - 1, -1};
    const std::ptrdiff_t sourceStep = std::ptrdiff_t{row.octets} * walk.forwards;
    const std::ptrdiff_t targetStep = std::ptrdiff_t{Chooser::octets} * walk.forwards;
    const std::ptrdiff_t errorStep = static_cast<std::ptrdiff_t>(colours) * walk.forwards;
    const std::uint8_t *source = row.pixels + std::ptrdiff_t{walk.first} * row.octets;
    std::uint8_t *target = to + std::ptrdiff_t{walk.first} * Chooser::octets;
    const std::int16_t *here = errors.here(walk.first);
    std::int16_t *behind = errors.next(walk.first - walk.forwards);
    Levels<colours> ahead{};
    Levels<colours> belowBehind{};
    Levels<colours> below{};
    for (int left = row.width; left > 0; --left) {
        Levels<colours> wanted = Chooser::levels(source);
        for (std::size_t colour = 0; colour < colours; ++colour)
            wanted[colour] = std::clamp(wanted[colour] + wholeLevels(here[colour] + ahead[colour]), 0, 255);
        const Levels<colours> shown = chooser.choose(wanted, target);
        for (std::size_t colour = 0; colour < colours; ++colour) {
            const int error = wanted[colour] - shown[colour];
            ahead[colour] = error * 7;
            behind[colour] = static_cast<std::int16_t>(belowBehind[colour] + error * 3);
            belowBehind[colour] = below[colour] + error * 5;
            below[colour] = error;
        }
        source += sourceStep;
        target += targetStep;
        here += errorStep;
        behind += errorStep;
    }
    for (std::size_t colour = 0; colour < colours; ++colour)
        behind[colour] = static_cast<std::int16_t>(belowBehind[colour]);
    errors.advance();
}

/// The pattern of 8 by 8 thresholds, each number from 0 to 63 once.
int bayer(int x, int y)
{
    int value = 0;
    for (int bit = 0; bit < 3; ++bit) {
        const int column = x >> bit & 1;
        const int row = y >> bit & 1;
        value = value << 2 | (column ^ row) << 1 | row;
    }
    return value;
}

/// Noise that depends on the place alone: 0 to 63.
int noise(int x, int y)
{
    std::uint32_t mixed = static_cast<std::uint32_t>(y) * 65537U + static_cast<std::uint32_t>(x) + 1U;
    mixed = (mixed ^ mixed >> 16) * 0x7FEB352DU;
    mixed = (mixed ^ mixed >> 15) * 0x846CA68BU;
    return static_cast<int>((mixed ^ mixed >> 16) >> 26);
}

/// How far a pattern or noise moves levels up and down, over half a step each way.
struct OffsetPattern {
    Dither dither;
    int step;
};

int offsetOf(OffsetPattern pattern, int threshold)
{
    return ((2 * threshold - 63) * pattern.step) / 128;
}

/// The offsets of a row's pixels by the pattern.
class OrderedOffsets
{
public:
    OrderedOffsets(OffsetPattern pattern, int y)
    {
        for (int x = 0; x < 8; ++x)
            m_offsets[static_cast<std::size_t>(x)] = offsetOf(pattern, bayer(x, y & 7));
    }

    int at(int x) const { return m_offsets[static_cast<std::size_t>(x & 7)]; }

private:
    std::array<int, 8> m_offsets{};
};

/// The offsets of a row's pixels by noise.
class NoiseOffsets
{
public:
    NoiseOffsets(OffsetPattern pattern, int y) : m_pattern(pattern), m_y(y) { }

    int at(int x) const { return offsetOf(m_pattern, noise(x, m_y)); }

private:
    OffsetPattern m_pattern;
    int m_y;
};

class NoOffsets
{
public:
    static int at(int) { return 0; }
};

template<typename Chooser, typename Offsets>
void offsetRow(Chooser &chooser, const Offsets &offsets, const PixelRow &row, std::uint8_t *target)
{
    const std::uint8_t *source = row.pixels;
    for (int x = 0; x < row.width; ++x, source += row.octets, target += Chooser::octets) {
        const int offset = offsets.at(x);
        auto wanted = Chooser::levels(source);
        for (int &level : wanted)
            level = std::clamp(level + offset, 0, 255);
        chooser.choose(wanted, target);
    }
}

/// Lends each band a chooser of its own, since a chooser learns; used ones first.
template<typename Chooser>
class ChooserPool
{
public:
    explicit ChooserPool(const Chooser &fresh) : m_fresh(fresh) { }

    std::unique_ptr<Chooser> take()
    {
        const std::lock_guard lock(m_mutex);
        if (m_used.empty())
            return std::make_unique<Chooser>(m_fresh);
        auto chooser = std::move(m_used.back());
        m_used.pop_back();
        return chooser;
    }

    void give(std::unique_ptr<Chooser> chooser)
    {
        const std::lock_guard lock(m_mutex);
        m_used.push_back(std::move(chooser));
    }

private:
    const Chooser &m_fresh;
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Chooser>> m_used;
};

/// Within a strip each pixel waits for the one before it and those above; the strips of a high picture are independent,
/// so that all processors can work. A strip begins with rows of the one above, whose own result is thrown away: so its
/// first row gets errors like those that the row above passes on, and no seam shows.
constexpr int rowsOfStrip = 512;
constexpr int rowsOfRunIn = 32;

/// One band's work: a chooser on loan, and the picture's rows.
template<typename Chooser>
class Quantiser
{
public:
    Quantiser(const Raster &picture, ChooserPool<Chooser> &pool)
        : m_rows(picture), m_width(picture.width()), m_height(picture.height()), m_pool(pool),
          m_chooser(pool.take())
    { }
    Quantiser(const Quantiser &) = delete;
    Quantiser &operator=(const Quantiser &) = delete;
    ~Quantiser() { m_pool.give(std::move(m_chooser)); }

    void diffuseStrip(int top, const PixelView &to)
    {
        ErrorRows<Chooser::colours> errors(m_width);
        std::vector<std::uint8_t> unused(static_cast<std::size_t>(m_width) * Chooser::octets);
        for (int y = std::max(0, top - rowsOfRunIn); y < top; ++y)
            diffuseRow(*m_chooser, errors, row(y), y, unused.data());
        const int bottom = std::min(m_height - top, rowsOfStrip) + top;
        for (int y = top; y < bottom; ++y)
            diffuseRow(*m_chooser, errors, row(y), y, to.row(y));
    }

    void offset(OffsetPattern pattern, int y, const PixelView &to)
    {
        if (pattern.dither == Dither::Ordered)
            offsetRow(*m_chooser, OrderedOffsets(pattern, y), row(y), to.row(y));
        else if (pattern.dither == Dither::Random)
            offsetRow(*m_chooser, NoiseOffsets(pattern, y), row(y), to.row(y));
        else
            offsetRow(*m_chooser, NoOffsets(), row(y), to.row(y));
    }

private:
    PixelRow row(int y) { return {m_rows.row(y), m_width, m_rows.channels()}; }

    ValueRows m_rows;
    int m_width;
    int m_height;
    ChooserPool<Chooser> &m_pool;
    std::unique_ptr<Chooser> m_chooser;
};

template<typename Chooser>
std::shared_ptr<PixelBuffer>
chosen(const Raster &picture, const Chooser &fresh, OffsetPattern pattern, const OperationProgress &progress)
{
    auto pixels = PixelBuffer::make(picture.width(), picture.height(), Chooser::octets);
    const PixelView to = pixels->view();
    ChooserPool<Chooser> pool(fresh);
    if (pattern.dither == Dither::FloydSteinberg) {
        const PixelArea strips{0, 0, to.width * rowsOfStrip, (to.height + rowsOfStrip - 1) / rowsOfStrip};
        inBands(strips, progress, [&](int first, int end) {
            Quantiser<Chooser> quantiser(picture, pool);
            for (int strip = first; strip < end; ++strip)
                quantiser.diffuseStrip(strip * rowsOfStrip, to);
        });
    } else {
        inBands(picture.area(), progress, [&](int first, int end) {
            Quantiser<Chooser> quantiser(picture, pool);
            for (int y = first; y < end; ++y)
                quantiser.offset(pattern, y, to);
        });
    }
    return pixels;
}

} // namespace

std::shared_ptr<PixelBuffer>
quantised(const Raster &picture, const Quantisation &how, const OperationProgress &progress)
{
    const OffsetPattern pattern{how.dither, how.step};
    if (how.byLuma)
        return chosen(picture, GrayChooser(how.palette), pattern, progress);
    return chosen(picture, PaletteChooser(how.palette), pattern, progress);
}

std::shared_ptr<PixelBuffer>
quantisedToFiveBits(const Raster &picture, Dither dither, const OperationProgress &progress)
{
    constexpr int stepOfFiveBits = 8;
    return chosen(picture, FiveBitChooser(), {dither, stepOfFiveBits}, progress);
}

} // namespace vandrel
