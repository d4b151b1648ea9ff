#include "Photograph.h"

#include <cmath>

namespace vandrel::bench {

Raster photograph(double millions)
{
    const int width = static_cast<int>(std::sqrt(millions * 1e6 * 4 / 3));
    const int height = width * 3 / 4;
    auto pixels = PixelBuffer::make(width, height, 3);
    std::uint32_t noise = 1;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            noise = noise * 1664525U + 1013904223U;
            const int edge = (x / 200 + y / 150) % 2 * 40;
            const int grain = static_cast<int>(noise >> 28);
            std::uint8_t *pixel = pixels->view().at(x, y);
            pixel[0] = static_cast<std::uint8_t>(x * 150 / width + edge + grain);
            pixel[1] = static_cast<std::uint8_t>(y * 150 / height + edge + grain);
            pixel[2] = static_cast<std::uint8_t>((x + y) * 150 / (width + height) + edge + grain);
        }
    }
    return Raster(std::move(pixels), 24);
}

} // namespace vandrel::bench
