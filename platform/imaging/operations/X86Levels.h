#pragma once

#include <array>
#include <cstdint>

namespace vandrel {

/// A table of 256 levels in the vector unit of newer x86 processors, which looks 32 of them up at a time.
class X86Levels
{
public:
    /// Whether the processor can do that; only then may map() be called.
    static bool areSupported();

    explicit X86Levels(const std::array<std::uint8_t, 256> &table);

    /// Replaces as many of `count` levels as make whole groups of 32, from one place to another; returns how many.
    int map(const std::uint8_t *from, std::uint8_t *to, int count) const;

private:
    // The levels by their upper four bits, then by their lower four.
    std::array<std::array<std::uint8_t, 16>, 16> m_rows;
};

} // namespace vandrel
