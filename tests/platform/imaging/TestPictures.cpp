#include "tests/platform/imaging/TestPictures.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <random>

namespace vandrel {

namespace {

/// The generator's own numbers: what distributions make of them differs between libraries.
class Noise
{
public:
    int below(int limit) { return static_cast<int>(m_generator() % static_cast<std::uint32_t>(limit)); }
    std::uint8_t level() { return static_cast<std::uint8_t>(below(256)); }

private:
    std::mt19937 m_generator{20};
};

Palette noisePalette(Noise &noise, int bitsPerPixel, bool gray)
{
    Palette palette;
    for (int number = 0; number < 1 << bitsPerPixel; ++number) {
        const Colour colour{noise.level(), noise.level(), noise.level()};
        palette.push_back(gray ? Colour{colour.red, colour.red, colour.red} : colour);
    }
    return palette;
}

} // namespace

const std::vector<PictureKind> &pictureKinds()
{
    static const std::vector<PictureKind> kinds{
        {"1 bit", 1, false},      {"4 bits", 4, false},   {"8 bits", 8, false},   {"8 bits gray", 8, true},
        {"4 bits gray", 4, true}, {"16 bits", 16, false}, {"24 bits", 24, false}, {"32 bits", 32, false},
    };
    return kinds;
}

Raster noisePicture(const PictureKind &kind, int width, int height)
{
    Noise noise;
    auto pixels = PixelBuffer::make(width, height, channelsOfDepth(kind.bitsPerPixel));
    for (int y = 0; y < height; ++y) {
        std::uint8_t *row = pixels->view().row(y);
        for (int octet = 0; octet < width * pixels->channels(); ++octet) {
            if (kind.bitsPerPixel <= 8)
                row[octet] = static_cast<std::uint8_t>(noise.below(1 << kind.bitsPerPixel));
            else
                row[octet] = kind.bitsPerPixel == 16 ? onFiveBits(noise.level()) : noise.level();
        }
    }
    Palette palette = kind.bitsPerPixel <= 8 ? noisePalette(noise, kind.bitsPerPixel, kind.gray) : Palette{};
    return Raster(std::move(pixels), kind.bitsPerPixel, std::move(palette), {96, 48});
}

Raster noisePicture(int bitsPerPixel, int width, int height)
{
    return noisePicture({{}, bitsPerPixel, false}, width, height);
}

Raster smoothPicture(int width, int height)
{
    auto pixels = PixelBuffer::make(width, height, 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t *pixel = pixels->view().at(x, y);
            pixel[0] = static_cast<std::uint8_t>(127 + 120 * std::sin(x / 17.0));
            pixel[1] = static_cast<std::uint8_t>(127 + 120 * std::cos(y / 23.0));
            pixel[2] = static_cast<std::uint8_t>(127 + 100 * std::sin((x + 2 * y) / 31.0));
        }
    }
    return Raster(std::move(pixels), 24);
}

Raster plainPicture(Colour colour, int width, int height)
{
    auto pixels = PixelBuffer::make(width, height, 3);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            std::uint8_t *pixel = pixels->view().at(x, y);
            pixel[0] = colour.blue;
            pixel[1] = colour.green;
            pixel[2] = colour.red;
        }
    }
    return Raster(std::move(pixels), 24);
}

std::vector<NamedArea> areasOf(int width, int height)
{
    return {
        {"inside", {width / 4, height / 3, width / 2, height / 3}},
        {"one pixel", {width / 2, height / 2, 1, 1}},
        {"across the upper left", {-5, -7, width / 2, height / 2}},
        {"across the lower right", {width / 2, height / 2, width, height}},
        {"covering all", {-1000, -1000, width + 2000, height + 2000}},
    };
}

bool areEqual(const Raster &one, const Raster &other)
{
    if (one.bitsPerPixel() != other.bitsPerPixel() || one.area() != other.area()
        || one.palette() != other.palette())
        return false;
    const ConstPixelView view = one.view();
    const auto octets = static_cast<std::size_t>(view.width) * static_cast<std::size_t>(view.channels);
    for (int y = 0; y < view.height; ++y) {
        if (std::memcmp(view.row(y), other.view().row(y), octets) != 0)
            return false;
    }
    return true;
}

} // namespace vandrel
