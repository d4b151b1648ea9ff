#pragma once

#include <array>
#include <vector>

#include "platform/imaging/raster/Raster.h"

namespace vandrel {

/// The pixels of a picture as values, a piece of a row at a time, whatever its depth: brightness alone, or blue, green, red
/// (and alpha where it has that). Palette numbers are looked up on the way, so that no second picture is needed. One
/// thread at a time.
class ValueRows
{
public:
    /// In 3 octets a pixel, or 4 with alpha.
    explicit ValueRows(const Raster &picture);
    /// In 1 octet a pixel, for an indexed picture whose palette is gray, or in as many as above. The picture must not be
    /// null, and stays.
    ValueRows(const Raster &picture, int channels);

    /// Octets a pixel.
    int channels() const { return m_channels; }
    int width() const { return m_view.width; }
    int height() const { return m_view.height; }

    /// `count` pixels of the row y from the column `left` on; valid until the next call.
    const std::uint8_t *at(int left, int y, int count);
    const std::uint8_t *row(int y) { return at(0, y, m_view.width); }

private:
    ConstPixelView m_view;
    const Palette &m_palette;
    int m_channels;
    bool m_looksUp;
    std::array<std::uint8_t, 256> m_brightness{};
    std::vector<std::uint8_t> m_lookedUp;
};

} // namespace vandrel
