#include "platform/imaging/operations/Effects.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/NeighbourRows.h"
#include "platform/imaging/operations/PixelPlanes.h"
#include "platform/imaging/operations/Rounding.h"
#include "platform/imaging/operations/Workspace.h"

namespace vandrel {

namespace {

/// The light falling on a pixel, from the square of its distance from the spot in half diagonals.
inline float spotLight(float squaredDistance)
{
    const float distance = std::sqrt(squaredDistance);
    const float light = 1.1F - 0.95F * distance * std::sqrt(distance);
    return std::min(std::max(light, 0.12F), 1.0F);
}

/// The light on each pixel of one row of the area.
void lightRow(const PixelArea &area, int y, float *light)
{
    const auto width = static_cast<float>(area.width);
    const auto height = static_cast<float>(area.height);
    const float perSquare = 4 / (width * width + height * height);
    const float down = static_cast<float>(y - area.top) - 0.40F * height;
    for (int x = 0; x < area.width; ++x) {
        const float across = static_cast<float>(x) - 0.45F * width;
        light[x] = spotLight((across * across + down * down) * perSquare);
    }
}

/// Factors for a row's pixels, with room behind for whole blocks of them.
std::vector<float> factorsFor(int width)
{
    return std::vector<float>(static_cast<std::size_t>(width) + PixelPlanes::size);
}

/// The share of the light that each colour throws back.
struct Tint {
    float red = 1;
    float green = 1;
    float blue = 1;
};

void scalePlane(std::array<std::uint8_t, PixelPlanes::size> &plane, const float *factors, float tint)
{
    for (std::size_t pixel = 0; pixel < plane.size(); ++pixel)
        plane[pixel] = toLevel(static_cast<float>(plane[pixel]) * factors[pixel] * tint);
}

/// How many pixels a row has, and how many octets each.
struct RowLayout {
    int pixels;
    int octets;
};

/// Multiplies the colours of each pixel of a row by its factor.
void scaleRow(const std::uint8_t *from,
              std::uint8_t *to,
              RowLayout layout,
              const std::vector<float> &factors,
              const Tint &tint)
{
    PixelPlanes planes;
    for (int x = 0; x < layout.pixels; x += PixelPlanes::size) {
        const int count = std::min(layout.pixels - x, PixelPlanes::size);
        const std::ptrdiff_t offset = static_cast<std::ptrdiff_t>(x) * layout.octets;
        const float *factorsHere = factors.data() + x;
        if (layout.octets == 1)
            std::copy_n(from + offset, count, planes.blue.begin());
        else
            takeApart(from + offset, count, layout.octets, planes);
        scalePlane(planes.blue, factorsHere, tint.blue);
        if (layout.octets == 1) {
            std::copy_n(planes.blue.begin(), count, to + offset);
            continue;
        }
        scalePlane(planes.green, factorsHere, tint.green);
        scalePlane(planes.red, factorsHere, tint.red);
        putTogether(planes, count, layout.octets, to + offset);
    }
}

/// By how many pixels a row has slipped to the right.
int slipOfRow(int y)
{
    const auto noise = static_cast<int>((static_cast<std::uint32_t>(y) * 2654435761U) >> 16);
    return static_cast<int>(std::floor(6 * std::sin(y / 9.0) + 0.5)) + noise % 7 - 3;
}

std::array<std::uint8_t, 256> dimmedLevels()
{
    std::array<std::uint8_t, 256> table{};
    for (std::size_t level = 0; level < table.size(); ++level)
        table[level] = static_cast<std::uint8_t>((level * 65 + 50) / 100);
    return table;
}

void brokenTvRow(Workspace &work, ValueRows &source, int y)
{
    static const std::array<std::uint8_t, 256> dimmed = dimmedLevels();
    const PixelArea &area = work.area();
    const int octets = work.channels();
    const int row = y - area.top;
    // What slips out at the right comes in at the left.
    const int slip = ((slipOfRow(row) % area.width) + area.width) % area.width;
    const std::uint8_t *from = source.at(area.left, y, area.width);
    std::uint8_t *to = work.targetRow(y);
    const std::uint8_t *broken = from + static_cast<std::ptrdiff_t>(area.width - slip) * octets;
    const std::uint8_t *end = from + static_cast<std::ptrdiff_t>(area.width) * octets;
    std::uint8_t *next = std::copy(broken, end, to);
    next = std::copy(from, broken, next);
    if (row % 2 == 0)
        return;
    for (std::uint8_t *octet = to; octet != next; ++octet)
        *octet = dimmed[*octet];
}

/// How steep the heights are and where the light comes from.
struct BumpLight {
    float depth;
    /// 1 from the upper left, -1 from the lower right.
    float side;
};

/// The factors by which a row's pixels are lit, from the brightness around them.
void bumpFactors(NeighbourRows rows, BumpLight light, int width, float *__restrict factors)
{
    constexpr float fullSlope = 1020;
    constexpr float halfRoot = 0.70710678F;
    for (int x = 0; x < width; ++x) {
        const int across = rows.above[x + 2] + 2 * rows.here[x + 2] + rows.below[x + 2] - rows.above[x]
            - 2 * rows.here[x] - rows.below[x];
        const int down = rows.below[x] + 2 * rows.below[x + 1] + rows.below[x + 2] - rows.above[x]
            - 2 * rows.above[x + 1] - rows.above[x + 2];
        const float slopeX = light.depth * static_cast<float>(across) / fullSlope;
        const float slopeY = light.depth * static_cast<float>(down) / fullSlope;
        const float towardsLight = light.side * 0.5F * (slopeX + slopeY) + halfRoot;
        const float lit = towardsLight / (halfRoot * std::sqrt(slopeX * slopeX + slopeY * slopeY + 1));
        factors[x] = std::min(std::max(lit, 0.0F), 2.0F);
    }
}

/// The two tables of a raised edge.
struct ButtonTables {
    std::array<std::uint8_t, 256> lighter{};
    std::array<std::uint8_t, 256> darker{};

    explicit ButtonTables(double percent)
    {
        for (std::size_t level = 0; level < lighter.size(); ++level) {
            const auto value = static_cast<double>(level);
            lighter[level] = toLevel(value + (255 - value) * percent / 100);
            darker[level] = toLevel(value * (100 - percent) / 100);
        }
    }
};

/// A row of a picture and its place in the result, `octets` for each pixel.
struct ButtonRow {
    const std::uint8_t *from;
    std::uint8_t *to;
    int octets;
};

void mapSpan(const ButtonRow &row, int first, int end, const std::array<std::uint8_t, 256> &table)
{
    for (int octet = first * row.octets; octet < end * row.octets; ++octet)
        row.to[octet] = table[row.from[octet]];
}

/// One row of the raised edge. Where a light and a dark side meet, the diagonal is light.
void buttonRow(const ButtonRow &row, const PixelArea &area, const ButtonTables &tables, int width, int y)
{
    const int fromTop = y - area.top;
    const int fromBottom = area.bottom() - 1 - y;
    std::copy_n(row.from, static_cast<std::ptrdiff_t>(area.width) * row.octets, row.to);
    // The light part of the row ends where the right side is nearer than the top, and its dark part begins where the
    // bottom is nearer than the left.
    if (fromTop < width && fromTop <= fromBottom) {
        const int lightEnd = area.width - fromTop;
        mapSpan(row, 0, lightEnd, tables.lighter);
        mapSpan(row, lightEnd, area.width, tables.darker);
    } else if (fromBottom < width) {
        const int darkBegin = fromBottom + 1;
        mapSpan(row, 0, darkBegin, tables.lighter);
        mapSpan(row, darkBegin, area.width, tables.darker);
    } else {
        mapSpan(row, 0, width, tables.lighter);
        mapSpan(row, area.width - width, area.width, tables.darker);
    }
}

} // namespace

Outcome rembrandt(const Subject &subject)
{
    return operate(subject, GrayResult::TakesColour, [](Workspace &work) {
        const PixelArea &area = work.area();
        inBands(area, work.progress(), [&](int first, int end) {
            ValueRows source = work.source();
            std::vector<float> light = factorsFor(area.width);
            for (int y = first; y < end; ++y) {
                lightRow(area, y, light.data());
                scaleRow(source.at(area.left, y, area.width), work.targetRow(y),
                         {area.width, work.channels()}, light, {1.05F, 1, 0.85F});
            }
        });
    });
}

Outcome brokenTv(const Subject &subject)
{
    return operate(subject, GrayResult::StaysGray, [](Workspace &work) {
        inBands(work.area(), work.progress(), [&](int first, int end) {
            ValueRows source = work.source();
            for (int y = first; y < end; ++y)
                brokenTvRow(work, source, y);
        });
    });
}

Outcome bumpMap(const Subject &subject, int depth, bool inverted)
{
    if (workingArea(subject).isEmpty())
        return refused(subject);
    if (depth == 0)
        return unchanged(subject);
    const BumpLight light{static_cast<float>(std::clamp(depth, -100, 100)), inverted ? -1.0F : 1.0F};
    return operate(subject, GrayResult::StaysGray, [&light](Workspace &work) {
        const PixelArea &area = work.area();
        mapLumaNeighbours(work, [&](const NeighbourRows &rows, int y, std::uint8_t *to) {
            std::vector<float> factors = factorsFor(area.width);
            bumpFactors(rows, light, area.width, factors.data());
            scaleRow(rows.source.at(area.left, y, area.width), to, {area.width, work.channels()}, factors,
                     {});
        });
    });
}

Outcome buttonize(const Subject &subject, double intensity, double width)
{
    const PixelArea area = workingArea(subject);
    if (area.isEmpty() || !std::isfinite(intensity) || !std::isfinite(width))
        return refused(subject);
    const int widest = std::min(area.width, area.height) / 2;
    const int edge = static_cast<int>(std::clamp<double>(width, 0, widest));
    if (edge == 0 || intensity <= 0)
        return unchanged(subject);
    const ButtonTables tables(std::min(intensity, 100.0));
    return operate(subject, GrayResult::StaysGray, [&](Workspace &work) {
        inBands(area, work.progress(), [&](int first, int end) {
            ValueRows source = work.source();
            for (int y = first; y < end; ++y)
                buttonRow({source.at(area.left, y, area.width), work.targetRow(y), work.channels()}, area,
                          tables, edge, y);
        });
    });
}

} // namespace vandrel
