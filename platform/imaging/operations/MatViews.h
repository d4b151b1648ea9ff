#pragma once

#include <opencv2/core.hpp>

#include "platform/imaging/raster/PixelBuffer.h"

namespace vandrel {

/// The same memory as OpenCV sees it.
inline cv::Mat matOf(const PixelView &view)
{
    return cv::Mat(view.height, view.width, CV_8UC(view.channels), view.data, view.stride);
}

/// For reading only: OpenCV knows no pixels that cannot be written.
inline cv::Mat matOf(const ConstPixelView &view)
{
    return cv::Mat(view.height, view.width, CV_8UC(view.channels), const_cast<std::uint8_t *>(view.data),
                   view.stride);
}

} // namespace vandrel
