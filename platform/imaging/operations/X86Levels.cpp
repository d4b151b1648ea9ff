#include "platform/imaging/operations/X86Levels.h"

#include <cstring>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace vandrel {

X86Levels::X86Levels(const std::array<std::uint8_t, 256> &table)
{
    for (std::size_t level = 0; level < table.size(); ++level)
        m_rows[level / 16][level % 16] = table[level];
}

#if defined(__x86_64__)

namespace {

using Rows = std::array<std::array<std::uint8_t, 16>, 16>;

constexpr int levelsAtOnce = 32;

/// Some levels, and each of their upper bits as the top bit of an octet, where it makes a choice.
struct Levels {
    __m256i lowerBits;
    __m256i bit4;
    __m256i bit5;
    __m256i bit6;
    __m256i bit7;
};

[[gnu::target("avx2")]] inline __m256i lookedUp(const std::array<std::uint8_t, 16> &row, const Levels &levels)
{
    __m128i entries;
    std::memcpy(&entries, row.data(), sizeof entries);
    return _mm256_shuffle_epi8(_mm256_broadcastsi128_si256(entries), levels.lowerBits);
}

// What the levels are in the table's two, four and eight rows from `first` on.

[[gnu::target("avx2")]] inline __m256i ofTwo(const Rows &rows, std::size_t first, const Levels &levels)
{
    return _mm256_blendv_epi8(lookedUp(rows[first], levels), lookedUp(rows[first + 1], levels), levels.bit4);
}

[[gnu::target("avx2")]] inline __m256i ofFour(const Rows &rows, std::size_t first, const Levels &levels)
{
    return _mm256_blendv_epi8(ofTwo(rows, first, levels), ofTwo(rows, first + 2, levels), levels.bit5);
}

[[gnu::target("avx2")]] inline __m256i ofEight(const Rows &rows, std::size_t first, const Levels &levels)
{
    return _mm256_blendv_epi8(ofFour(rows, first, levels), ofFour(rows, first + 4, levels), levels.bit6);
}

} // namespace

bool X86Levels::areSupported()
{
    return __builtin_cpu_supports("avx2") != 0;
}

[[gnu::target("avx2")]] int X86Levels::map(const std::uint8_t *from, std::uint8_t *to, int count) const
{
    const __m256i lowerFour = _mm256_set1_epi8(15);
    int done = 0;
    for (; done + levelsAtOnce <= count; done += levelsAtOnce) {
        __m256i all;
        std::memcpy(&all, from + done, sizeof all);
        const Levels levels{_mm256_and_si256(all, lowerFour), _mm256_slli_epi16(all, 3),
                            _mm256_slli_epi16(all, 2), _mm256_slli_epi16(all, 1), all};
        const __m256i result
            = _mm256_blendv_epi8(ofEight(m_rows, 0, levels), ofEight(m_rows, 8, levels), levels.bit7);
        std::memcpy(to + done, &result, sizeof result);
    }
    return done;
}

#else

bool X86Levels::areSupported()
{
    return false;
}

int X86Levels::map(const std::uint8_t *, std::uint8_t *, int) const
{
    return 0;
}

#endif

} // namespace vandrel
