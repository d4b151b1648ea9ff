#include "platform/imaging/operations/Filters.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numeric>
#include <vector>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/NeighbourRows.h"
#include "platform/imaging/operations/Rounding.h"
#include "platform/imaging/operations/Workspace.h"

namespace vandrel {

namespace {

/// Rows weighted 1 4 6 4 1 across, as the ones below need them too. The sums of a whole neighbourhood, halves included,
/// just fit sixteen bits. The library's own blur rounds halves of a part of a picture otherwise than of a whole one.
class BlurredRows
{
public:
    explicit BlurredRows(const Workspace &work)
        : m_source(work.source()), m_area(work.area()),
          m_padded((static_cast<std::size_t>(m_area.width) + 4) * static_cast<std::size_t>(work.channels()))
    {
        for (auto &row : m_rows)
            row.resize(static_cast<std::size_t>(m_area.width) * static_cast<std::size_t>(work.channels()));
    }

    /// Makes y the row that write() writes. Rows are asked for one after the other.
    void begin(int y)
    {
        int row = y - 2;
        for (auto &weighed : m_rows)
            weigh(row++, weighed);
    }
    void advance(int y)
    {
        std::rotate(m_rows.begin(), m_rows.begin() + 1, m_rows.end());
        weigh(y + 2, m_rows[4]);
    }

    void write(std::uint8_t *__restrict to) const
    {
        const std::size_t octets = m_rows[0].size();
        const std::array rows{m_rows[0].data(), m_rows[1].data(), m_rows[2].data(), m_rows[3].data(),
                              m_rows[4].data()};
        for (std::size_t octet = 0; octet < octets; ++octet) {
            const auto outer = static_cast<std::uint16_t>(rows[0][octet] + rows[4][octet]);
            const auto inner = static_cast<std::uint16_t>((rows[1][octet] + rows[3][octet]) * 4);
            const auto sum = static_cast<std::uint16_t>(outer + inner + rows[2][octet] * 6 + 128);
            to[octet] = static_cast<std::uint8_t>(sum >> 8);
        }
    }

private:
    void weigh(int y, std::vector<std::uint16_t> &to)
    {
        const int row = mirrored(y, m_source.height());
        const int channels = m_source.channels();
        const auto pixelAt = [&](int x) { return m_source.at(mirrored(x, m_source.width()), row, 1); };
        std::uint8_t *padded = m_padded.data();
        for (int x = -2; x < 0; ++x)
            padded = std::copy_n(pixelAt(m_area.left + x), channels, padded);
        padded = std::copy_n(m_source.at(m_area.left, row, m_area.width),
                             static_cast<std::ptrdiff_t>(to.size()), padded);
        for (int x = 0; x < 2; ++x)
            padded = std::copy_n(pixelAt(m_area.right() + x), channels, padded);
        const auto step = static_cast<std::size_t>(channels);
        const std::uint8_t *from = m_padded.data();
        for (std::size_t octet = 0; octet < to.size(); ++octet) {
            const int outer = from[octet] + from[octet + 4 * step];
            const int inner = from[octet + step] + from[octet + 3 * step];
            to[octet] = static_cast<std::uint16_t>(outer + 4 * inner + 6 * from[octet + 2 * step]);
        }
    }

    ValueRows m_source;
    PixelArea m_area;
    std::vector<std::uint8_t> m_padded;
    std::array<std::vector<std::uint16_t>, 5> m_rows;
};

/// What is made of a row of the picture and of the same row blurred, which it writes over.
using BlurredRowUse = std::function<void(const std::uint8_t *row, std::uint8_t *blurred)>;

/// Writes the blurred rows of the area; reads beyond them as far as the picture goes.
void blurBand(Workspace &work, int first, int end, const BlurredRowUse &use)
{
    BlurredRows rows(work);
    ValueRows source = work.source();
    rows.begin(first);
    for (int y = first; y < end; ++y) {
        if (y > first)
            rows.advance(y);
        std::uint8_t *to = work.targetRow(y);
        rows.write(to);
        if (use)
            use(source.at(work.area().left, y, work.area().width), to);
    }
}

/// What is added to a level that differs from the blurred one by -255 to 255.
using SharpenTable = std::array<std::int16_t, 511>;

SharpenTable sharpenTable(double percent)
{
    SharpenTable table{};
    for (int index = 0; index < 511; ++index) {
        const double change = percent * (index - 255) / 50;
        table[static_cast<std::size_t>(index)] = static_cast<std::int16_t>(std::floor(change + 0.5));
    }
    return table;
}

void sharpenRow(const std::uint8_t *from, int octets, const SharpenTable &table, std::uint8_t *__restrict to)
{
    for (int octet = 0; octet < octets; ++octet) {
        const int difference = from[octet] - to[octet] + 255;
        to[octet] = toLevel(from[octet] + table[static_cast<std::size_t>(difference)]);
    }
}

/// The weighted sum of a pixel's neighbourhood in whole numbers of that type; the caller knows that it fits.
template<typename Sum>
inline Sum weightedSum(const NeighbourRows &rows, const std::array<Sum, 9> &kernel, int octet)
{
    const int second = octet + rows.octets;
    const int third = second + rows.octets;
    // The sum is taken in the type's own width on purpose: sixteen bits go twice as fast as thirty-two.
    Sum sum = static_cast<Sum>(kernel[0] * rows.above[octet]);
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[1] * rows.above[second]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[2] * rows.above[third]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[3] * rows.here[octet]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[4] * rows.here[second]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[5] * rows.here[third]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[6] * rows.below[octet]));
    sum = static_cast<Sum>(sum + static_cast<Sum>(kernel[7] * rows.below[second]));
    return static_cast<Sum>(sum + static_cast<Sum>(kernel[8] * rows.below[third]));
}

/// A matrix as it is used: the weights, a divisor above zero, and what is added to the quotient.
struct Weighing {
    std::array<std::int64_t, 9> weights;
    std::int64_t divisor;
    std::int64_t bias;

    /// The largest sum, of whichever sign, that the weights can give.
    std::int64_t furthestSum() const
    {
        std::int64_t total = 0;
        for (const std::int64_t weight : weights)
            total += std::abs(weight);
        return total * 255;
    }

    template<typename Sum>
    std::array<Sum, 9> weightsAs() const
    {
        std::array<Sum, 9> narrow{};
        for (std::size_t index = 0; index < narrow.size(); ++index)
            narrow[index] = static_cast<Sum>(weights[index]);
        return narrow;
    }
};

Weighing weighingOf(const Kernel &kernel, int divisor, int bias)
{
    Weighing how{{}, divisor, bias};
    std::copy(kernel.begin(), kernel.end(), how.weights.begin());
    if (divisor == 0)
        how.divisor = std::accumulate(how.weights.begin(), how.weights.end(), std::int64_t{0});
    if (how.divisor == 0)
        how.divisor = 1;
    if (how.divisor < 0) {
        how.divisor = -how.divisor;
        for (std::int64_t &weight : how.weights)
            weight = -weight;
    }
    return how;
}

/// Writes `octets` octets of a row.
using MatrixRow = void (*)(NeighbourRows rows, const Weighing &how, int octets, std::uint8_t *__restrict to);

/// Without a division, and where no sum leaves sixteen bits.
void plainMatrixRow(NeighbourRows rows, const Weighing &how, int octets, std::uint8_t *__restrict to)
{
    const auto weights = how.weightsAs<std::int16_t>();
    const auto shift = static_cast<std::int16_t>(how.bias);
    for (int octet = 0; octet < octets; ++octet) {
        const auto sum = static_cast<std::int16_t>(weightedSum<std::int16_t>(rows, weights, octet) + shift);
        to[octet] = static_cast<std::uint8_t>(std::clamp<std::int16_t>(sum, 0, 255));
    }
}

/// Where the sums fit one type, and numbers of the other tell the quotients from the whole numbers next to them.
template<typename Sum, typename Real>
void dividedMatrixRow(NeighbourRows rows, const Weighing &how, int octets, std::uint8_t *__restrict to)
{
    const auto weights = how.weightsAs<Sum>();
    const auto divisor = static_cast<Real>(how.divisor);
    const auto bias = static_cast<Real>(how.bias);
    const Real perDivisor = 1 / divisor;
    // A quarter more lifts exact quotients off the whole numbers, where a rounding error would show, and lifts no other
    // onto the next one.
    const Real half = divisor / 2 + Real(0.25);
    for (int octet = 0; octet < octets; ++octet) {
        const auto sum = static_cast<Real>(weightedSum<Sum>(rows, weights, octet));
        const Real level = std::min(std::max((sum + half) * perDivisor + bias, Real(0)), Real(255));
        to[octet] = static_cast<std::uint8_t>(static_cast<int>(level));
    }
}

/// Division rounded towards minus infinity, by a positive divisor.
std::int64_t floorDivision(std::int64_t value, std::int64_t divisor)
{
    const std::int64_t quotient = value / divisor;
    return value % divisor < 0 ? quotient - 1 : quotient;
}

void anyMatrixRow(NeighbourRows rows, const Weighing &how, int octets, std::uint8_t *__restrict to)
{
    const std::array<std::int64_t, 9> weights = how.weights;
    for (int octet = 0; octet < octets; ++octet) {
        const auto sum = weightedSum<std::int64_t>(rows, weights, octet);
        const std::int64_t rounded = floorDivision(2 * sum + how.divisor, 2 * how.divisor) + how.bias;
        to[octet] = static_cast<std::uint8_t>(std::clamp<std::int64_t>(rounded, 0, 255));
    }
}

/// The quickest of those that are exact.
MatrixRow matrixRowFor(const Weighing &how)
{
    constexpr std::int64_t mostShort = 32767;
    constexpr std::int64_t most = 1 << 20;
    const std::int64_t furthest = how.furthestSum();
    const std::int64_t bias = std::abs(how.bias);
    if (how.divisor == 1 && furthest + bias <= mostShort)
        return plainMatrixRow;
    if (furthest <= mostShort && how.divisor <= 256 && bias <= 1024)
        return dividedMatrixRow<std::int16_t, float>;
    if (furthest < most * 255 && how.divisor < most && bias < most)
        return dividedMatrixRow<std::int32_t, double>;
    return anyMatrixRow;
}

/// The means of one row of squares.
class MosaicRow
{
public:
    MosaicRow(Workspace &work, int size)
        : m_source(work.source()), m_target(work.target()), m_area(work.area()), m_size(size),
          m_sums(static_cast<std::size_t>(m_area.width) * static_cast<std::size_t>(work.channels()))
    { }

    void write(int top, int bottom)
    {
        addColumns(top, bottom);
        std::vector<std::uint8_t> row(m_sums.size());
        for (int left = 0; left < m_area.width; left += m_size)
            writeMeans(left, std::min(m_area.width, left + m_size), bottom - top, row);
        for (int y = top; y < bottom; ++y)
            std::copy(row.begin(), row.end(), m_target.at(m_area.left, y));
    }

private:
    void addColumns(int top, int bottom)
    {
        std::fill(m_sums.begin(), m_sums.end(), 0U);
        for (int y = top; y < bottom; ++y) {
            const std::uint8_t *from = m_source.at(m_area.left, y, m_area.width);
            for (std::size_t octet = 0; octet < m_sums.size(); ++octet)
                m_sums[octet] += from[octet];
        }
    }

    void writeMeans(int left, int right, int rows, std::vector<std::uint8_t> &row) const
    {
        const int channels = m_source.channels();
        const std::uint64_t count
            = static_cast<std::uint64_t>(right - left) * static_cast<std::uint64_t>(rows);
        std::array<std::uint64_t, 4> sums{};
        for (int octet = left * channels; octet < right * channels; octet += channels) {
            for (int channel = 0; channel < channels; ++channel) {
                const int place = octet + channel;
                sums[static_cast<std::size_t>(channel)] += m_sums[static_cast<std::size_t>(place)];
            }
        }
        for (std::uint64_t &sum : sums)
            sum = (2 * sum + count) / (2 * count);
        for (int octet = left * channels; octet < right * channels; octet += channels) {
            for (int channel = 0; channel < channels; ++channel) {
                const int place = octet + channel;
                row[static_cast<std::size_t>(place)]
                    = static_cast<std::uint8_t>(sums[static_cast<std::size_t>(channel)]);
            }
        }
    }

    ValueRows m_source;
    PixelView m_target;
    PixelArea m_area;
    int m_size;
    std::vector<std::uint32_t> m_sums;
};

void writeMosaic(Workspace &work, int size)
{
    const PixelArea &area = work.area();
    const int squares = (area.height + size - 1) / size;
    // A row of squares counts as one of all their pixels.
    const std::int64_t pixels = std::int64_t{area.width} * size;
    const PixelArea squareRows{
        area.left, 0, static_cast<int>(std::min<std::int64_t>(pixels, std::numeric_limits<int>::max())),
        squares};
    inBands(squareRows, work.progress(), [&](int first, int end) {
        MosaicRow row(work, size);
        for (int square = first; square < end; ++square) {
            const int top = area.top + square * size;
            row.write(top, std::min(area.bottom(), top + size));
        }
    });
}

} // namespace

Outcome blur(const Subject &subject)
{
    return operate(subject, GrayResult::StaysGray, [](Workspace &work) {
        inBands(work.area(), work.progress(), [&](int first, int end) { blurBand(work, first, end, {}); });
    });
}

Outcome sharpen(const Subject &subject, double percent)
{
    if (workingArea(subject).isEmpty() || !std::isfinite(percent))
        return refused(subject);
    if (percent <= 0)
        return unchanged(subject);
    const SharpenTable table = sharpenTable(std::min(percent, 100.0));
    return operate(subject, GrayResult::StaysGray, [&table](Workspace &work) {
        const int octets = work.area().width * work.channels();
        const BlurredRowUse sharpenIt = [&](const std::uint8_t *row, std::uint8_t *blurred) {
            sharpenRow(row, octets, table, blurred);
        };
        inBands(work.area(), work.progress(),
                [&](int first, int end) { blurBand(work, first, end, sharpenIt); });
    });
}

Outcome emboss(const Subject &subject)
{
    return matrix(subject, {-1, 0, 0, 0, 0, 0, 0, 0, 1}, 1, 128);
}

Outcome matrix(const Subject &subject, const Kernel &kernel, int divisor, int bias)
{
    const Weighing how = weighingOf(kernel, divisor, bias);
    const MatrixRow row = matrixRowFor(how);
    return operate(subject, GrayResult::StaysGray, [&](Workspace &work) {
        const int octets = work.area().width * work.channels();
        mapNeighbours(work,
                      [&](const NeighbourRows &rows, int, std::uint8_t *to) { row(rows, how, octets, to); });
    });
}

Outcome mosaic(const Subject &subject, double size)
{
    const PixelArea area = workingArea(subject);
    if (area.isEmpty() || !std::isfinite(size))
        return refused(subject);
    if (size < 2)
        return unchanged(subject);
    const int whole = static_cast<int>(std::min<double>(size, std::max(area.width, area.height)));
    if (whole < 2)
        return unchanged(subject);
    return operate(subject, GrayResult::StaysGray, [whole](Workspace &work) { writeMosaic(work, whole); });
}

} // namespace vandrel
