#include "platform/imaging/codecs/Reduction.h"

#include <algorithm>
#include <vector>

#include "platform/imaging/raster/Conversions.h"

namespace vandrel {

namespace {

/// Which source pixels each target pixel stands for, from starts[i] to before starts[i + 1]; where the sizes do not
/// divide, neighbouring means differ by one pixel in what they take in.
std::vector<int> startsOf(int from, int to)
{
    std::vector<int> starts(static_cast<std::size_t>(to) + 1);
    for (std::int64_t index = 0; index <= to; ++index)
        starts[static_cast<std::size_t>(index)] = static_cast<int>(index * from / to);
    return starts;
}

class Averager
{
public:
    Averager(const Raster &picture, QSize size)
        : m_picture(picture), m_columns(startsOf(picture.width(), size.width())),
          m_channels(picture.view().channels == 4 ? 4 : 3),
          m_sums(static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(m_channels)),
          m_expanded(static_cast<std::size_t>(picture.width()) * 3)
    { }

    int channels() const { return m_channels; }

    void writeRow(int top, int bottom, std::uint8_t *to)
    {
        std::fill(m_sums.begin(), m_sums.end(), 0U);
        for (int y = top; y < bottom; ++y)
            addRow(y);
        const auto rows = static_cast<std::uint64_t>(bottom - top);
        for (std::size_t octet = 0; octet < m_sums.size(); ++octet) {
            const std::size_t column = octet / static_cast<std::size_t>(m_channels);
            const std::uint64_t count
                = static_cast<std::uint64_t>(m_columns[column + 1] - m_columns[column]) * rows;
            to[octet] = static_cast<std::uint8_t>((m_sums[octet] + count / 2) / count);
        }
    }

private:
    void addRow(int y)
    {
        const std::uint8_t *from = m_picture.view().row(y);
        if (m_picture.isIndexed()) {
            expandRow(from, m_picture.width(), m_picture.palette(), m_expanded.data());
            from = m_expanded.data();
        }
        for (std::size_t column = 0; column + 1 < m_columns.size(); ++column) {
            std::uint64_t *sums = &m_sums[column * static_cast<std::size_t>(m_channels)];
            for (int x = m_columns[column]; x < m_columns[column + 1]; ++x, from += m_channels) {
                for (int channel = 0; channel < m_channels; ++channel)
                    sums[channel] += from[channel];
            }
        }
    }

    const Raster &m_picture;
    std::vector<int> m_columns;
    int m_channels;
    std::vector<std::uint64_t> m_sums;
    std::vector<std::uint8_t> m_expanded;
};

} // namespace

Raster reduced(const Raster &picture, QSize size)
{
    const QSize all(picture.width(), picture.height());
    const QSize kept = size.boundedTo(all).expandedTo(QSize(1, 1));
    if (kept == all)
        return picture;
    Averager averager(picture, kept);
    const std::vector<int> rows = startsOf(picture.height(), kept.height());
    auto pixels = PixelBuffer::make(kept.width(), kept.height(), averager.channels());
    for (int y = 0; y < kept.height(); ++y)
        averager.writeRow(rows[static_cast<std::size_t>(y)], rows[static_cast<std::size_t>(y) + 1],
                          pixels->view().row(y));
    return Raster(std::move(pixels), averager.channels() == 4 ? 32 : 24);
}

} // namespace vandrel
