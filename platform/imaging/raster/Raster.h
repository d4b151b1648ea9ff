#pragma once

#include <memory>
#include <optional>
#include <utility>

#include "platform/imaging/raster/Colour.h"
#include "platform/imaging/raster/PixelArea.h"
#include "platform/imaging/raster/PixelBuffer.h"

namespace vandrel {

/// How many pixels make an inch; 0 where the file did not say.
struct Resolution {
    double horizontal = 0;
    double vertical = 0;

    bool operator==(const Resolution &) const = default;
    bool isKnown() const { return horizontal > 0 && vertical > 0; }
};

/// How the JPEG file that a picture was read from was written, so that saving it unchanged loses next to nothing.
struct JpegOrigin {
    /// The library's quality, 1 to 100, at which nothing is stored more coarsely than in the file.
    int quality = 0;
    /// How many pixels share a colour in the file, across and down: 1 or 2.
    int sharedAcross = 1;
    int sharedDown = 1;

    bool operator==(const JpegOrigin &) const = default;
};

/// A picture in memory: pixels that are shared and never change, so that copies (an undo step, the file's picture
/// beside the one being worked on) cost nothing. To change a picture is to make another. Usable from any thread.
///
/// Pixels of 1, 4 and 8 bits are held one an octet, as numbers of a palette that has 2, 16 or 256 colours; those of
/// 16 bits as blue, green, red, with each value one of the 32 that five bits can say; those of 24 bits as blue,
/// green, red; those of 32 with alpha behind.
class Raster
{
public:
    /// No picture.
    Raster() = default;
    /// `bitsPerPixel` is 1, 4, 8, 16, 24 or 32 and fits the buffer's channels. A palette is filled up with black or
    /// cut to the number of colours that the depth can have; the pixels' numbers must be below that.
    Raster(std::shared_ptr<const PixelBuffer> pixels,
           int bitsPerPixel,
           Palette palette = {},
           Resolution resolution = {});

    bool isNull() const { return m_pixels == nullptr; }
    int width() const { return isNull() ? 0 : m_pixels->width(); }
    int height() const { return isNull() ? 0 : m_pixels->height(); }
    int bitsPerPixel() const { return m_bitsPerPixel; }
    /// Whether pixels are numbers of colours in the palette.
    bool isIndexed() const { return m_bitsPerPixel <= 8; }
    /// The colours of an indexed picture, else empty. Valid as long as the raster or a copy of it.
    const Palette &palette() const;
    Resolution resolution() const { return m_resolution; }
    PixelArea area() const { return {0, 0, width(), height()}; }

    /// The pixels; not for the null picture.
    ConstPixelView view() const { return std::as_const(*m_pixels).view(); }
    /// The colour of a pixel inside the picture; alpha aside.
    Colour colourAt(int x, int y) const;

    /// Whether both show the very same pixels in memory with the same palette.
    bool sharesPixelsWith(const Raster &other) const;

    /// The same picture with other pixels of the same kind, with another palette, or with another resolution.
    Raster withPixels(std::shared_ptr<const PixelBuffer> pixels) const;
    Raster withPalette(const Palette &palette) const;
    Raster withResolution(Resolution resolution) const;
    /// The same picture as one that was just read from such a file. Other pixels, another palette or another depth
    /// lose the mark.
    Raster withJpegOrigin(const JpegOrigin &origin) const;
    const std::optional<JpegOrigin> &jpegOrigin() const { return m_jpegOrigin; }
    /// The same pixels as those of another depth of as many octets a pixel: 16 bits may be called 24.
    Raster withDepth(int bitsPerPixel) const;

private:
    std::shared_ptr<const PixelBuffer> m_pixels;
    std::shared_ptr<const Palette> m_palette;
    int m_bitsPerPixel = 0;
    Resolution m_resolution;
    std::optional<JpegOrigin> m_jpegOrigin;
};

/// How many octets a pixel of that depth takes in memory.
int channelsOfDepth(int bitsPerPixel);

/// The five-bit value nearest to an eight-bit one, as an eight-bit one.
inline std::uint8_t onFiveBits(int value)
{
    const int five = (value * 31 + 127) / 255;
    return static_cast<std::uint8_t>(five << 3 | five >> 2);
}

} // namespace vandrel
