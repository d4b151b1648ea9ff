#include "platform/imaging/operations/ValueRows.h"

#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

ValueRows::ValueRows(const Raster &picture) : ValueRows(picture, picture.view().channels == 4 ? 4 : 3) { }

ValueRows::ValueRows(const Raster &picture, int channels)
    : m_view(picture.view()), m_palette(picture.palette()), m_channels(channels),
      m_looksUp(picture.isIndexed() && !(channels == 1 && isGrayRamp(m_palette)))
{
    if (!m_looksUp)
        return;
    m_lookedUp.resize(static_cast<std::size_t>(m_view.width) * static_cast<std::size_t>(channels));
    for (std::size_t number = 0; number < m_palette.size(); ++number)
        m_brightness[number] = static_cast<std::uint8_t>(luma(m_palette[number]));
}

const std::uint8_t *ValueRows::at(int left, int y, int count)
{
    const std::uint8_t *pixels = m_view.at(left, y);
    if (!m_looksUp)
        return pixels;
    if (m_channels == 3) {
        expandRow(pixels, count, m_palette, m_lookedUp.data());
        return m_lookedUp.data();
    }
    for (int x = 0; x < count; ++x)
        m_lookedUp[static_cast<std::size_t>(x)] = m_brightness[pixels[x]];
    return m_lookedUp.data();
}

} // namespace vandrel
