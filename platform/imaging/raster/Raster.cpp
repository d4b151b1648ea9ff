#include "platform/imaging/raster/Raster.h"

#include <utility>

namespace vandrel {

int channelsOfDepth(int bitsPerPixel)
{
    if (bitsPerPixel <= 8)
        return 1;
    return bitsPerPixel == 32 ? 4 : 3;
}

Raster::Raster(std::shared_ptr<const PixelBuffer> pixels,
               int bitsPerPixel,
               Palette palette,
               Resolution resolution)
    : m_pixels(std::move(pixels)), m_bitsPerPixel(bitsPerPixel), m_resolution(resolution)
{
    if (isIndexed()) {
        palette.resize(std::size_t{1} << bitsPerPixel);
        m_palette = std::make_shared<const Palette>(std::move(palette));
    }
}

const Palette &Raster::palette() const
{
    static const Palette none;
    return m_palette ? *m_palette : none;
}

Colour Raster::colourAt(int x, int y) const
{
    const std::uint8_t *pixel = view().at(x, y);
    return isIndexed() ? palette()[*pixel] : Colour{pixel[2], pixel[1], pixel[0]};
}

bool Raster::sharesPixelsWith(const Raster &other) const
{
    return m_pixels == other.m_pixels && m_bitsPerPixel == other.m_bitsPerPixel
        && palette() == other.palette();
}

Raster Raster::withPixels(std::shared_ptr<const PixelBuffer> pixels) const
{
    Raster changed = *this;
    changed.m_pixels = std::move(pixels);
    changed.m_jpegOrigin.reset();
    return changed;
}

Raster Raster::withPalette(const Palette &palette) const
{
    return Raster(m_pixels, m_bitsPerPixel, palette, m_resolution);
}

Raster Raster::withResolution(Resolution resolution) const
{
    Raster changed = *this;
    changed.m_resolution = resolution;
    return changed;
}

Raster Raster::withDepth(int bitsPerPixel) const
{
    Raster changed = *this;
    changed.m_bitsPerPixel = bitsPerPixel;
    changed.m_jpegOrigin.reset();
    return changed;
}

Raster Raster::withJpegOrigin(const JpegOrigin &origin) const
{
    Raster marked = *this;
    marked.m_jpegOrigin = origin;
    return marked;
}

} // namespace vandrel
