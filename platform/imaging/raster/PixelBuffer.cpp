#include "platform/imaging/raster/PixelBuffer.h"

#include <mutex>
#include <new>
#include <utility>

#include "platform/imaging/raster/HugePages.h"
#include "platform/imaging/raster/PictureLimits.h"

namespace vandrel {

namespace {

/// What a large page holds.
constexpr std::align_val_t largeAlignment{std::size_t{2} << 20};
/// Smaller blocks come from the heap quickly and are not kept.
constexpr std::size_t smallestKept = std::size_t{4} << 20;

std::size_t withRoomForPages(std::size_t octets)
{
    const auto page = static_cast<std::size_t>(largeAlignment);
    return octets < smallestKept ? octets : (octets + page - 1) / page * page;
}

std::uint8_t *newBlock(std::size_t octets)
{
    if (octets < smallestKept)
        return static_cast<std::uint8_t *>(::operator new(octets));
    const std::size_t whole = withRoomForPages(octets);
    void *block = ::operator new(whole, largeAlignment);
    preferHugePages(block, whole);
    return static_cast<std::uint8_t *>(block);
}

void deleteBlock(std::uint8_t *block, std::size_t octets)
{
    if (octets < smallestKept)
        ::operator delete(block);
    else
        ::operator delete(block, largeAlignment);
}

/// At most one block, the large one given up last.
class SpareBlock
{
public:
    ~SpareBlock() { release(); }

    std::uint8_t *take(std::size_t octets)
    {
        const std::lock_guard lock(m_mutex);
        if (octets < smallestKept)
            return nullptr;
        if (m_octets == octets)
            return std::exchange(m_block, nullptr);
        // The pictures at hand have another size now.
        drop();
        return nullptr;
    }

    void give(std::uint8_t *block, std::size_t octets)
    {
        const std::lock_guard lock(m_mutex);
        drop();
        m_block = block;
        m_octets = octets;
    }

    void release()
    {
        const std::lock_guard lock(m_mutex);
        drop();
    }

private:
    void drop()
    {
        if (m_block != nullptr)
            deleteBlock(std::exchange(m_block, nullptr), m_octets);
        m_octets = 0;
    }

    std::mutex m_mutex;
    std::uint8_t *m_block = nullptr;
    std::size_t m_octets = 0;
};

SpareBlock &spareBlock()
{
    static SpareBlock spare;
    return spare;
}

} // namespace

std::shared_ptr<PixelBuffer> PixelBuffer::make(int width, int height, int channels)
{
    if (!isWithinLimits(width, height, channels))
        throw std::bad_alloc();
    const std::size_t stride
        = (static_cast<std::size_t>(width) * static_cast<std::size_t>(channels) + 3) / 4 * 4;
    const std::size_t octets = stride * static_cast<std::size_t>(height);
    std::uint8_t *block = spareBlock().take(octets);
    if (block == nullptr)
        block = newBlock(octets);
    try {
        return std::shared_ptr<PixelBuffer>(new PixelBuffer({block, width, height, channels, stride}));
    } catch (...) {
        deleteBlock(block, octets);
        throw;
    }
}

void PixelBuffer::releaseSpare()
{
    spareBlock().release();
}

PixelBuffer::~PixelBuffer()
{
    if (octets() < smallestKept)
        deleteBlock(m_view.data, octets());
    else
        spareBlock().give(m_view.data, octets());
}

} // namespace vandrel
