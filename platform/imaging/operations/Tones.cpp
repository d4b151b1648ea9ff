#include "platform/imaging/operations/Tones.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/imaging/operations/Histogram.h"
#include "platform/imaging/operations/PixelMap.h"
#include "platform/imaging/operations/PixelPlanes.h"
#include "platform/imaging/operations/Rounding.h"
#include "platform/imaging/operations/X86Levels.h"

namespace vandrel {

namespace {

/// A table from a function of the level.
template<typename Curve>
ToneTable tableOf(Curve curve)
{
    ToneTable table{};
    for (std::size_t level = 0; level < table.size(); ++level)
        table[level] = toLevel(static_cast<double>(curve(static_cast<double>(level))));
    return table;
}

bool isIdentity(const ToneTable &table)
{
    for (std::size_t level = 0; level < table.size(); ++level) {
        if (table[level] != level)
            return false;
    }
    return true;
}

void mapAllOctets(const ToneTable &table, const std::uint8_t *from, std::uint8_t *to, int count)
{
    int octet = 0;
    // Eight at a time, for the processor's sake: single octets wait for each other in the write buffer.
    for (; octet + 8 <= count; octet += 8) {
        for (int next = 0; next < 8; ++next)
            to[octet + next] = table[from[octet + next]];
    }
    for (; octet < count; ++octet)
        to[octet] = table[from[octet]];
}

/// Looks levels up in a table the quickest way.
class LevelLookup
{
public:
    explicit LevelLookup(const ToneTable &table) : m_table(table)
    {
        if (X86Levels::areSupported())
            m_together.emplace(table);
    }

    void map(const std::uint8_t *from, std::uint8_t *to, int count) const
    {
        const int done = m_together ? m_together->map(from, to, count) : 0;
        mapAllOctets(m_table, from + done, to + done, count - done);
    }

private:
    const ToneTable &m_table;
    std::optional<X86Levels> m_together;
};

/// The first level up to which at least `permille` of all pixels lie.
int levelAt(const Histogram &histogram, std::int64_t total, std::int64_t permille)
{
    std::int64_t sum = 0;
    for (std::size_t level = 0; level < histogram.size(); ++level) {
        sum += histogram[level];
        if (sum * 1000 >= total * permille)
            return static_cast<int>(level);
    }
    return 255;
}

ToneTable equalizingTable(const Histogram &histogram, std::int64_t total)
{
    const auto lowest = static_cast<std::size_t>(
        std::find_if(histogram.begin(), histogram.end(), [](std::int64_t count) { return count > 0; })
        - histogram.begin());
    const std::int64_t range = total - histogram[lowest];
    ToneTable table{};
    std::int64_t above = 0;
    for (std::size_t level = 0; level < table.size(); ++level) {
        if (level > lowest)
            above += histogram[level];
        table[level] = range > 0 ? static_cast<std::uint8_t>((above * 255 * 2 + range) / (range * 2))
                                 : static_cast<std::uint8_t>(level);
    }
    return table;
}

/// By how much each brightness is moved.
using ShiftTable = std::array<std::int16_t, 256>;

ShiftTable shiftsOf(const ToneTable &table)
{
    ShiftTable shifts{};
    for (std::size_t level = 0; level < table.size(); ++level)
        shifts[level] = static_cast<std::int16_t>(table[level] - static_cast<int>(level));
    return shifts;
}

/// Moves the three colours of each pixel by what the table moves its brightness by.
void shiftByLuma(const ShiftTable &table, const std::uint8_t *from, std::uint8_t *to, int pixels, int octets)
{
    PixelPlanes planes;
    PixelPlanes moved;
    LumaPlane brightness{};
    std::array<std::int16_t, PixelPlanes::size> shifts{};
    for (int x = 0; x < pixels; x += PixelPlanes::size) {
        const int count = std::min(pixels - x, PixelPlanes::size);
        takeApart(from + static_cast<std::ptrdiff_t>(x) * octets, count, octets, planes);
        lumaOf(planes, brightness);
        for (std::size_t pixel = 0; pixel < shifts.size(); ++pixel)
            shifts[pixel] = table[brightness[pixel]];
        shiftLevels(planes.blue.data(), shifts.data(), PixelPlanes::size, moved.blue.data());
        shiftLevels(planes.green.data(), shifts.data(), PixelPlanes::size, moved.green.data());
        shiftLevels(planes.red.data(), shifts.data(), PixelPlanes::size, moved.red.data());
        putTogether(moved, count, octets, to + static_cast<std::ptrdiff_t>(x) * octets);
    }
}

void invertOctets(const std::uint8_t *from, std::uint8_t *to, int count)
{
    for (int octet = 0; octet < count; ++octet)
        to[octet] = static_cast<std::uint8_t>(~from[octet]);
}

} // namespace

Outcome applyTones(const Subject &subject, const ToneTable &table)
{
    if (workingArea(subject).isEmpty())
        return refused(subject);
    if (isIdentity(table))
        return unchanged(subject);
    const LevelLookup levels(table);
    return mapPixels(subject, GrayResult::StaysGray,
                     [&](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         levels.map(from, to, pixels * octets);
                     });
}

Outcome autoContrast(const Subject &subject)
{
    const PixelArea area = workingArea(subject);
    if (area.isEmpty())
        return refused(subject);
    const Histogram histogram = lumaHistogram(subject.picture, area);
    const int low = levelAt(histogram, area.pixels(), 5);
    const int high = levelAt(histogram, area.pixels(), 995);
    if (high <= low)
        return unchanged(subject);
    return applyTones(subject,
                      tableOf([low, high](double level) { return 255 * (level - low) / (high - low); }));
}

Outcome equalize(const Subject &subject)
{
    const PixelArea area = workingArea(subject);
    if (area.isEmpty())
        return refused(subject);
    const ToneTable table = equalizingTable(lumaHistogram(subject.picture, area), area.pixels());
    if (isIdentity(table))
        return unchanged(subject);
    const ShiftTable shifts = shiftsOf(table);
    return mapPixels(subject, GrayResult::StaysGray,
                     [&](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         if (octets == 1)
                             mapAllOctets(table, from, to, pixels);
                         else
                             shiftByLuma(shifts, from, to, pixels, octets);
                     });
}

Outcome negative(const Subject &subject)
{
    return mapPixels(subject, GrayResult::StaysGray,
                     [](const std::uint8_t *from, std::uint8_t *to, int pixels, int octets) {
                         invertOctets(from, to, pixels * octets);
                     });
}

Outcome concaveSpectrum(const Subject &subject)
{
    return applyTones(subject, tableOf([](double level) { return level * level / 255; }));
}

Outcome convexSpectrum(const Subject &subject)
{
    return applyTones(
        subject, tableOf([](double level) { return 255 - toLevel((255 - level) * (255 - level) / 255); }));
}

Outcome blend(const Subject &subject, double percent)
{
    if (!std::isfinite(percent))
        return refused(subject);
    const double share = std::clamp(percent, 0.0, 100.0);
    return applyTones(subject,
                      tableOf([share](double level) { return (level * (100 - share) + 255 * share) / 100; }));
}

Outcome brightness(const Subject &subject, double percent)
{
    if (!std::isfinite(percent))
        return refused(subject);
    const double share = std::clamp(percent, -100.0, 100.0);
    return applyTones(subject, tableOf([share](double level) { return level + 255 * share / 100; }));
}

Outcome contrast(const Subject &subject, double percent)
{
    if (!std::isfinite(percent))
        return refused(subject);
    const double factor = (100 + std::clamp(percent, -100.0, 100.0)) / 100;
    return applyTones(subject,
                      tableOf([factor](double level) { return (level - 127.5) * factor * factor + 127.5; }));
}

Outcome gamma(const Subject &subject, double gamma)
{
    if (!std::isfinite(gamma))
        return refused(subject);
    const double power = gamma <= 0 ? 1 : 1 / std::clamp(gamma, 0.1, 10.0);
    return applyTones(subject, tableOf([power](double level) { return 255 * std::pow(level / 255, power); }));
}

} // namespace vandrel
