#include "platform/imaging/operations/MedianCut.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <vector>

namespace vandrel {

namespace {

/// The pixels of one five-bit colour: their number and the sums of their levels.
struct Cell {
    std::uint32_t count = 0;
    std::array<std::uint64_t, 3> sums{};
};

struct UsedCell {
    /// Red, green and blue, 0 to 31.
    std::array<int, 3> place{};
    Cell cell;
};

std::uint32_t packed(Colour colour)
{
    return static_cast<std::uint32_t>(colour.red) << 16 | static_cast<std::uint32_t>(colour.green) << 8
        | colour.blue;
}

void count(std::vector<Cell> &cells, Colour colour, std::uint32_t times)
{
    Cell &cell = cells[static_cast<std::size_t>(colour.red >> 3) << 10
                       | static_cast<std::size_t>(colour.green >> 3) << 5
                       | static_cast<std::size_t>(colour.blue >> 3)];
    cell.count += times;
    cell.sums[0] += static_cast<std::uint64_t>(colour.red) * times;
    cell.sums[1] += static_cast<std::uint64_t>(colour.green) * times;
    cell.sums[2] += static_cast<std::uint64_t>(colour.blue) * times;
}

std::vector<Cell> countedCells(const Raster &picture)
{
    std::vector<Cell> cells(32 * 32 * 32);
    const ConstPixelView view = picture.view();
    std::array<std::uint32_t, 256> numbers{};
    for (int y = 0; y < view.height; ++y) {
        const std::uint8_t *pixel = view.row(y);
        for (int x = 0; x < view.width; ++x, pixel += view.channels) {
            if (picture.isIndexed())
                ++numbers[*pixel];
            else
                count(cells, {pixel[2], pixel[1], pixel[0]}, 1);
        }
    }
    for (std::size_t number = 0; number < picture.palette().size(); ++number)
        count(cells, picture.palette()[number], numbers[number]);
    return cells;
}

std::vector<UsedCell> usedCells(const Raster &picture)
{
    const std::vector<Cell> cells = countedCells(picture);
    std::vector<UsedCell> used;
    for (std::size_t index = 0; index < cells.size(); ++index) {
        if (cells[index].count > 0) {
            used.push_back({{static_cast<int>(index >> 10), static_cast<int>(index >> 5 & 31),
                             static_cast<int>(index & 31)},
                            cells[index]});
        }
    }
    return used;
}

/// Some of the used cells, those from `first` to before `end`.
class Box
{
public:
    Box(std::vector<UsedCell> &cells, std::size_t first, std::size_t end)
        : m_cells(&cells), m_first(first), m_end(end)
    {
        std::array<int, 3> low{31, 31, 31};
        std::array<int, 3> high{};
        for (std::size_t index = first; index < end; ++index) {
            const UsedCell &used = cells[index];
            m_pixels += used.cell.count;
            for (std::size_t axis = 0; axis < 3; ++axis) {
                low[axis] = std::min(low[axis], used.place[axis]);
                high[axis] = std::max(high[axis], used.place[axis]);
            }
        }
        for (std::size_t axis = 0; axis < 3; ++axis) {
            if (high[axis] - low[axis] > m_range) {
                m_range = high[axis] - low[axis];
                m_axis = axis;
            }
        }
    }

    bool canBeCut() const { return m_range > 0; }
    double weight() const { return m_range * std::sqrt(static_cast<double>(m_pixels)); }

    /// Keeps the lower half of the pixels along the longest side and gives the upper one.
    Box cut()
    {
        const auto begin = m_cells->begin() + static_cast<std::ptrdiff_t>(m_first);
        const auto end = m_cells->begin() + static_cast<std::ptrdiff_t>(m_end);
        std::sort(begin, end, [axis = m_axis](const UsedCell &one, const UsedCell &other) {
            return std::pair(one.place[axis], one.place) < std::pair(other.place[axis], other.place);
        });
        // Both halves keep at least one level of the axis.
        std::uint64_t below = 0;
        std::size_t middle = m_first;
        const int lowest = (*m_cells)[m_first].place[m_axis];
        const int highest = (*m_cells)[m_end - 1].place[m_axis];
        while (middle < m_end) {
            const int level = (*m_cells)[middle].place[m_axis];
            if (level > lowest && (below * 2 >= m_pixels || level == highest))
                break;
            below += (*m_cells)[middle].cell.count;
            ++middle;
        }
        const Box upper(*m_cells, middle, m_end);
        *this = Box(*m_cells, m_first, middle);
        return upper;
    }

    Colour mean() const
    {
        std::array<std::uint64_t, 3> sums{};
        for (std::size_t index = m_first; index < m_end; ++index) {
            for (std::size_t axis = 0; axis < 3; ++axis)
                sums[axis] += (*m_cells)[index].cell.sums[axis];
        }
        const auto level = [&](std::size_t axis) {
            return static_cast<std::uint8_t>((sums[axis] * 2 + m_pixels) / (m_pixels * 2));
        };
        return {level(0), level(1), level(2)};
    }

private:
    std::vector<UsedCell> *m_cells;
    std::size_t m_first;
    std::size_t m_end;
    std::uint64_t m_pixels = 0;
    int m_range = 0;
    std::size_t m_axis = 0;
};

} // namespace

std::optional<Palette> fewColours(const Raster &picture, std::size_t most)
{
    std::set<std::uint32_t> found;
    const ConstPixelView view = picture.view();
    std::uint32_t last = ~0U;
    for (int y = 0; y < view.height; ++y) {
        for (int x = 0; x < view.width; ++x) {
            const std::uint32_t colour = packed(picture.colourAt(x, y));
            if (colour == last)
                continue;
            last = colour;
            found.insert(colour);
            if (found.size() > most)
                return {};
        }
    }
    Palette palette;
    for (const std::uint32_t colour : found) {
        palette.push_back({static_cast<std::uint8_t>(colour >> 16), static_cast<std::uint8_t>(colour >> 8),
                           static_cast<std::uint8_t>(colour)});
    }
    return palette;
}

Palette medianCut(const Raster &picture, std::size_t count)
{
    std::vector<UsedCell> cells = usedCells(picture);
    std::vector<Box> boxes{Box(cells, 0, cells.size())};
    while (boxes.size() < count) {
        const auto widest
            = std::max_element(boxes.begin(), boxes.end(), [](const Box &one, const Box &other) {
                  return one.weight() < other.weight();
              });
        if (!widest->canBeCut())
            break;
        const Box upper = widest->cut();
        boxes.push_back(upper);
    }
    Palette palette;
    for (const Box &box : boxes)
        palette.push_back(box.mean());
    return palette;
}

} // namespace vandrel
