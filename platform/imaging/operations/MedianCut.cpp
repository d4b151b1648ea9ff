#include "platform/imaging/operations/MedianCut.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <mutex>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/Histogram.h"

namespace vandrel {

namespace {

/// The pixels of one five-bit colour: their number, and the sums of the three bits of their levels that are left.
struct Cell {
    std::uint32_t count = 0;
    std::array<std::uint32_t, 3> rests{};
};

struct UsedCell {
    /// Red, green and blue, 0 to 31.
    std::array<int, 3> place{};
    Cell cell;

    /// The sum of the pixels' red, green or blue.
    std::uint64_t sum(std::size_t axis) const
    {
        return static_cast<std::uint64_t>(place[axis] * 8) * cell.count + cell.rests[axis];
    }
};

std::uint32_t packed(Colour colour)
{
    return static_cast<std::uint32_t>(colour.red) << 16 | static_cast<std::uint32_t>(colour.green) << 8
        | colour.blue;
}

class Cells
{
public:
    void count(Colour colour, std::uint32_t times)
    {
        Cell &cell = m_cells[static_cast<std::size_t>(colour.red >> 3) << 10
                             | static_cast<std::size_t>(colour.green >> 3) << 5
                             | static_cast<std::size_t>(colour.blue >> 3)];
        cell.count += times;
        cell.rests[0] += (colour.red & 7U) * times;
        cell.rests[1] += (colour.green & 7U) * times;
        cell.rests[2] += (colour.blue & 7U) * times;
    }

    void add(const Cells &others)
    {
        for (std::size_t index = 0; index < m_cells.size(); ++index) {
            m_cells[index].count += others.m_cells[index].count;
            for (std::size_t axis = 0; axis < 3; ++axis)
                m_cells[index].rests[axis] += others.m_cells[index].rests[axis];
        }
    }

    const std::vector<Cell> &all() const { return m_cells; }

private:
    std::vector<Cell> m_cells{std::size_t{1} << 15};
};

void countRow(const std::uint8_t *pixel, int width, int channels, Cells &cells)
{
    for (int x = 0; x < width; ++x, pixel += channels)
        cells.count({pixel[2], pixel[1], pixel[0]}, 1);
}

Cells countedPixels(const ConstPixelView &view)
{
    Cells cells;
    std::mutex mutex;
    inBands({0, 0, view.width, view.height}, {}, [&](int first, int end) {
        Cells ofBand;
        for (int y = first; y < end; ++y)
            countRow(view.row(y), view.width, view.channels, ofBand);
        const std::lock_guard lock(mutex);
        cells.add(ofBand);
    });
    return cells;
}

Cells countedNumbers(const Raster &picture)
{
    const Histogram numbers = numberHistogram(picture);
    Cells cells;
    for (std::size_t number = 0; number < picture.palette().size(); ++number)
        cells.count(picture.palette()[number], static_cast<std::uint32_t>(numbers[number]));
    return cells;
}

std::vector<UsedCell> usedCells(const Raster &picture)
{
    const Cells counted = picture.isIndexed() ? countedNumbers(picture) : countedPixels(picture.view());
    const std::vector<Cell> &cells = counted.all();
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
                sums[axis] += (*m_cells)[index].sum(axis);
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

/// Up to 256 different colours, each looked for at the places from where its hash leads on.
class FewColours
{
public:
    explicit FewColours(std::size_t most) : m_most(most) { m_places.fill(none); }

    /// False for a colour too many.
    bool hold(std::uint32_t colour)
    {
        std::size_t place = (colour * 2654435761U) >> (32 - placeBits);
        while (m_places[place] != colour) {
            if (m_places[place] == none) {
                m_places[place] = colour;
                m_colours.push_back(colour);
                return m_colours.size() <= m_most;
            }
            place = (place + 1) % m_places.size();
        }
        return true;
    }

    const std::vector<std::uint32_t> &all() const { return m_colours; }

private:
    static constexpr int placeBits = 10;
    static constexpr std::uint32_t none = ~0U;

    std::size_t m_most;
    std::array<std::uint32_t, std::size_t{1} << placeBits> m_places{};
    std::vector<std::uint32_t> m_colours;
};

bool holdRow(const std::uint8_t *pixel, int width, int channels, FewColours &colours)
{
    for (int x = 0; x < width; ++x, pixel += channels) {
        if (!colours.hold(packed({pixel[2], pixel[1], pixel[0]})))
            return false;
    }
    return true;
}

bool holdAll(const FewColours &some, FewColours &colours)
{
    return std::all_of(some.all().begin(), some.all().end(),
                       [&colours](std::uint32_t colour) { return colours.hold(colour); });
}

/// False for more colours than it holds.
bool holdPixels(const ConstPixelView &view, std::size_t most, FewColours &colours)
{
    std::mutex mutex;
    std::atomic<bool> fits = true;
    inBands({0, 0, view.width, view.height}, {}, [&](int first, int end) {
        FewColours ofBand(most);
        for (int y = first; fits && y < end; ++y) {
            if (!holdRow(view.row(y), view.width, view.channels, ofBand))
                fits = false;
        }
        const std::lock_guard lock(mutex);
        if (fits && !holdAll(ofBand, colours))
            fits = false;
    });
    return fits;
}

bool holdNumbers(const Raster &picture, FewColours &colours)
{
    const Histogram numbers = numberHistogram(picture);
    for (std::size_t number = 0; number < picture.palette().size(); ++number) {
        if (numbers[number] > 0 && !colours.hold(packed(picture.palette()[number])))
            return false;
    }
    return true;
}

} // namespace

std::optional<Palette> fewColours(const Raster &picture, std::size_t most)
{
    FewColours found(most);
    const bool fits
        = picture.isIndexed() ? holdNumbers(picture, found) : holdPixels(picture.view(), most, found);
    if (!fits)
        return {};
    std::vector<std::uint32_t> colours = found.all();
    std::sort(colours.begin(), colours.end());
    Palette palette;
    for (const std::uint32_t colour : colours) {
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
