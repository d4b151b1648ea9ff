#include "platform/imaging/operations/Scaling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <vector>

#include <opencv2/core/hal/intrin.hpp>

#include "platform/imaging/operations/Bands.h"
#include "platform/imaging/operations/Rounding.h"
#include "platform/imaging/operations/ValueRows.h"

namespace vandrel {

namespace {

/// Which pixels of the source make one of the target along a side: those from `first` on, as many as there are weights.
struct Mixture {
    int first;
    const float *weights;
    int count;
};

/// The mixtures of all pixels along a side.
class Mixtures
{
public:
    Mixtures(int from, int to)
    {
        m_firsts.reserve(static_cast<std::size_t>(to));
        for (int pixel = 0; pixel < to; ++pixel) {
            m_starts.push_back(m_weights.size());
            if (to <= from)
                cover(static_cast<std::int64_t>(pixel) * from, from, to);
            else
                lieBetween((pixel + 0.5) * from / to - 0.5, from);
        }
        m_starts.push_back(m_weights.size());
    }

    int size() const { return static_cast<int>(m_firsts.size()); }

    Mixture at(int pixel) const
    {
        const auto index = static_cast<std::size_t>(pixel);
        const std::size_t start = m_starts[index];
        return {m_firsts[index], m_weights.data() + start, static_cast<int>(m_starts[index + 1] - start)};
    }

private:
    /// Counted in parts of a source pixel, `to` of which make a whole one: `from` of them, from `begin` on, make one of
    /// the target.
    void cover(std::int64_t begin, int from, int to)
    {
        const std::int64_t end = begin + from;
        m_firsts.push_back(static_cast<int>(begin / to));
        for (std::int64_t pixel = begin / to; pixel * to < end; ++pixel) {
            const std::int64_t covered = std::min(end, (pixel + 1) * to) - std::max(begin, pixel * to);
            m_weights.push_back(static_cast<float>(static_cast<double>(covered) / from));
        }
    }

    /// Pixels lie at whole numbers; before the first and behind the last is more of the same.
    void lieBetween(double place, int from)
    {
        const double inside = std::clamp<double>(place, 0, from - 1);
        const double whole = std::floor(inside);
        const auto second = static_cast<float>(inside - whole);
        m_firsts.push_back(static_cast<int>(whole));
        m_weights.push_back(1 - second);
        if (second > 0)
            m_weights.push_back(second);
    }

    std::vector<int> m_firsts;
    std::vector<std::size_t> m_starts;
    std::vector<float> m_weights;
};

/// A vector takes four values where a pixel may have three.
constexpr std::size_t beyondTheLast = 1;

/// The source's rows at the target's width. Keeps the last two, since those are what neighbouring rows share.
class WideRows
{
public:
    WideRows(const Raster &picture, const Mixtures &columns)
        : m_source(picture), m_columns(columns), m_levels(valuesOf(picture.width()))
    {
        for (auto &row : m_rows)
            row.resize(valuesOf(columns.size()));
    }

    const std::vector<float> &row(int y)
    {
        const auto place = static_cast<std::size_t>(y % 2);
        if (m_numbers[place] != y) {
            mix(m_source.row(y), m_rows[place].data());
            m_numbers[place] = y;
        }
        return m_rows[place];
    }

private:
    std::size_t valuesOf(int pixels) const
    {
        return static_cast<std::size_t>(pixels) * static_cast<std::size_t>(m_source.channels())
            + beyondTheLast;
    }

    void mix(const std::uint8_t *from, float *to)
    {
        const std::size_t octets = m_levels.size() - beyondTheLast;
        for (std::size_t octet = 0; octet < octets; ++octet)
            m_levels[octet] = static_cast<float>(from[octet]);
        const auto step = std::ptrdiff_t{m_source.channels()};
        for (int x = 0; x < m_columns.size(); ++x, to += step) {
            const Mixture mixture = m_columns.at(x);
            const float *pixel = m_levels.data() + mixture.first * step;
            cv::v_float32x4 sum = cv::v_load(pixel) * cv::v_setall_f32(mixture.weights[0]);
            for (int index = 1; index < mixture.count; ++index)
                sum += cv::v_load(pixel + index * step) * cv::v_setall_f32(mixture.weights[index]);
            // The fourth value of a pixel of three is written over by the next pixel.
            cv::v_store(to, sum);
        }
    }

    ValueRows m_source;
    const Mixtures &m_columns;
    std::vector<float> m_levels;
    std::array<std::vector<float>, 2> m_rows;
    std::array<int, 2> m_numbers{-1, -1};
};

void multiply(const std::vector<float> &row, float weight, std::vector<float> &to)
{
    for (std::size_t value = 0; value < to.size(); ++value)
        to[value] = row[value] * weight;
}

void add(const std::vector<float> &row, float weight, std::vector<float> &to)
{
    for (std::size_t value = 0; value < to.size(); ++value)
        to[value] += row[value] * weight;
}

void writeLevels(const std::vector<float> &values, std::uint8_t *to)
{
    const std::size_t octets = values.size() - beyondTheLast;
    for (std::size_t octet = 0; octet < octets; ++octet)
        to[octet] = toLevel(values[octet]);
}

} // namespace

void scaleSmoothly(const Raster &picture, const PixelView &target, const OperationProgress &progress)
{
    const Mixtures columns(picture.width(), target.width);
    const Mixtures rows(picture.height(), target.height);
    // What a row costs is what it is made of, where that is more than itself.
    const std::int64_t madeOf = picture.area().pixels() / target.height;
    const int cost = std::max(target.width, static_cast<int>(madeOf));
    inBands({0, 0, cost, target.height}, progress, [&](int first, int end) {
        WideRows wide(picture, columns);
        std::vector<float> sums(wide.row(rows.at(first).first).size());
        for (int y = first; y < end; ++y) {
            const Mixture mixture = rows.at(y);
            multiply(wide.row(mixture.first), mixture.weights[0], sums);
            for (int index = 1; index < mixture.count; ++index)
                add(wide.row(mixture.first + index), mixture.weights[index], sums);
            writeLevels(sums, target.row(y));
        }
    });
}

} // namespace vandrel
