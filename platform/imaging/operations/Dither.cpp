#include "platform/imaging/operations/Dither.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/NearestColour.h"
#include "platform/imaging/operations/Rounding.h"

namespace vandrel {

namespace {

/// A pixel's blue, green and red.
using Levels = std::array<int, 3>;

/// Chooses among the colours of a palette.
class PaletteChooser
{
public:
    explicit PaletteChooser(const Quantisation &how) : m_nearest(how.palette), m_byLuma(how.byLuma) { }

    static constexpr int octets = 1;

    Levels levels(const std::uint8_t *pixel) const
    {
        if (!m_byLuma)
            return {pixel[0], pixel[1], pixel[2]};
        const int brightness = luma(pixel[2], pixel[1], pixel[0]);
        return {brightness, brightness, brightness};
    }

    Levels choose(const Levels &wanted, std::uint8_t *to)
    {
        const std::uint8_t number = m_nearest.find(wanted[2], wanted[1], wanted[0]);
        *to = number;
        const Colour colour = m_nearest.palette()[number];
        return {colour.blue, colour.green, colour.red};
    }

private:
    NearestColour m_nearest;
    bool m_byLuma;
};

/// Chooses the nearest of 32 levels for each colour.
class FiveBitChooser
{
public:
    static constexpr int octets = 3;

    Levels levels(const std::uint8_t *pixel) const { return {pixel[0], pixel[1], pixel[2]}; }

    Levels choose(const Levels &wanted, std::uint8_t *to) const
    {
        Levels shown{};
        for (std::size_t colour = 0; colour < 3; ++colour) {
            to[colour] = onFiveBits(wanted[colour]);
            shown[colour] = to[colour];
        }
        return shown;
    }
};

/// The errors passed on to one row and the next, in sixteenths, with a pixel to spare on both sides.
class ErrorRows
{
public:
    explicit ErrorRows(int width) : m_here(static_cast<std::size_t>(width) + 2), m_next(m_here.size()) { }

    const Levels &at(int x) const { return m_here[static_cast<std::size_t>(x) + 1]; }

    /// Passes on the error of the pixel x: 7 to the one after it, 3, 5 and 1 to the row below.
    void pass(int x, int forwards, const Levels &error)
    {
        add(m_here, x + forwards, error, 7);
        add(m_next, x - forwards, error, 3);
        add(m_next, x, error, 5);
        add(m_next, x + forwards, error, 1);
    }

    void advance()
    {
        m_here.swap(m_next);
        std::fill(m_next.begin(), m_next.end(), Levels{});
    }

private:
    static void add(std::vector<Levels> &row, int x, const Levels &error, int weight)
    {
        const int place = x + 1;
        Levels &levels = row[static_cast<std::size_t>(place)];
        for (std::size_t colour = 0; colour < 3; ++colour)
            levels[colour] += error[colour] * weight;
    }

    std::vector<Levels> m_here;
    std::vector<Levels> m_next;
};

/// Sixteenths as whole levels, halves rounded up.
int wholeLevels(int sixteenths)
{
    return (sixteenths + 8) >> 4;
}

template<typename Chooser>
void diffuseRow(Chooser &chooser, ErrorRows &errors, const ConstPixelView &from, const PixelView &to, int y)
{
    // Back and forth: always the same direction would draw worms.
    const int forwards = y % 2 == 0 ? 1 : -1;
    int x = forwards > 0 ? 0 : from.width - 1;
    for (int done = 0; done < from.width; ++done, x += forwards) {
        Levels wanted = chooser.levels(from.at(x, y));
        for (std::size_t colour = 0; colour < 3; ++colour)
            wanted[colour] = std::clamp(wanted[colour] + wholeLevels(errors.at(x)[colour]), 0, 255);
        const Levels shown = chooser.choose(wanted, to.at(x, y));
        errors.pass(x, forwards, {wanted[0] - shown[0], wanted[1] - shown[1], wanted[2] - shown[2]});
    }
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

int offsetAt(Dither dither, int step, int x, int y)
{
    if (dither == Dither::None)
        return 0;
    const int threshold = dither == Dither::Ordered ? bayer(x & 7, y & 7) : noise(x, y);
    return ((2 * threshold - 63) * step) / 128;
}

template<typename Chooser>
void offsetRow(
    Chooser &chooser, Dither dither, int step, const ConstPixelView &from, const PixelView &to, int y)
{
    for (int x = 0; x < from.width; ++x) {
        const int offset = offsetAt(dither, step, x, y);
        Levels wanted = chooser.levels(from.at(x, y));
        for (int &level : wanted)
            level = std::clamp(level + offset, 0, 255);
        chooser.choose(wanted, to.at(x, y));
    }
}

template<typename Chooser>
std::shared_ptr<PixelBuffer> chosen(
    const Raster &picture, const Chooser &fresh, Dither dither, int step, const OperationProgress &progress)
{
    const ConstPixelView from = picture.view();
    auto pixels = PixelBuffer::make(from.width, from.height, Chooser::octets);
    const PixelView to = pixels->view();
    if (dither == Dither::FloydSteinberg) {
        // Each pixel waits for the one before it and those above.
        Chooser chooser = fresh;
        ErrorRows errors(from.width);
        for (int y = 0; y < from.height; ++y) {
            diffuseRow(chooser, errors, from, to, y);
            if (progress && y % 256 == 255)
                progress(static_cast<int>(std::int64_t{y} * 100 / from.height));
        }
        return pixels;
    }
    inBands({0, 0, from.width, from.height}, progress, [&](int first, int end) {
        Chooser chooser = fresh;
        for (int y = first; y < end; ++y)
            offsetRow(chooser, dither, step, from, to, y);
    });
    return pixels;
}

} // namespace

std::shared_ptr<PixelBuffer>
quantised(const Raster &picture, const Quantisation &how, const OperationProgress &progress)
{
    return chosen(picture, PaletteChooser(how), how.dither, how.step, progress);
}

std::shared_ptr<PixelBuffer>
quantisedToFiveBits(const Raster &picture, Dither dither, const OperationProgress &progress)
{
    constexpr int stepOfFiveBits = 8;
    return chosen(picture, FiveBitChooser(), dither, stepOfFiveBits, progress);
}

} // namespace vandrel
