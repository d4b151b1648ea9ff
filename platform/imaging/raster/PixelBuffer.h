#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vandrel {

/// Rows of pixels that can be written; a view that owns nothing. Rows are `stride` octets apart.
struct PixelView {
    std::uint8_t *data = nullptr;
    int width = 0;
    int height = 0;
    /// Octets a pixel: 1 (a palette's number or a gray), 3 (blue, green, red) or 4 (and alpha).
    int channels = 0;
    std::size_t stride = 0;

    std::uint8_t *row(int y) const { return data + static_cast<std::size_t>(y) * stride; }
    std::uint8_t *at(int x, int y) const
    {
        return row(y) + static_cast<std::size_t>(x) * static_cast<std::size_t>(channels);
    }
};

/// The same for reading only.
struct ConstPixelView {
    const std::uint8_t *data = nullptr;
    int width = 0;
    int height = 0;
    int channels = 0;
    std::size_t stride = 0;

    const std::uint8_t *row(int y) const { return data + static_cast<std::size_t>(y) * stride; }
    const std::uint8_t *at(int x, int y) const
    {
        return row(y) + static_cast<std::size_t>(x) * static_cast<std::size_t>(channels);
    }
};

/// The memory of a picture's pixels. Rows begin at multiples of four octets. The block of the large buffer that was
/// given up last is kept for the next of the same size, since an operation's result usually takes the place of the
/// one before the last, and fresh memory costs more than most operations. Usable from any thread.
class PixelBuffer
{
public:
    /// Pixels of undefined value. Raises std::bad_alloc for a size outside of the limits or without memory.
    static std::shared_ptr<PixelBuffer> make(int width, int height, int channels);
    /// Gives the kept block back to the system.
    static void releaseSpare();

    PixelBuffer(const PixelBuffer &) = delete;
    PixelBuffer &operator=(const PixelBuffer &) = delete;
    ~PixelBuffer();

    int width() const { return m_view.width; }
    int height() const { return m_view.height; }
    int channels() const { return m_view.channels; }
    std::size_t octets() const { return m_view.stride * static_cast<std::size_t>(m_view.height); }

    PixelView view() { return m_view; }
    ConstPixelView view() const
    {
        return {m_view.data, m_view.width, m_view.height, m_view.channels, m_view.stride};
    }

private:
    explicit PixelBuffer(const PixelView &view) : m_view(view) { }

    PixelView m_view;
};

} // namespace vandrel
