#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

bool isWithinLimits(std::int64_t width, std::int64_t height, int channels)
{
    using namespace picturelimits;
    if (width < 1 || height < 1 || width > longestSide || height > longestSide)
        return false;
    return width * height <= mostPixels && width * height * channels <= mostOctets;
}

} // namespace vandrel
