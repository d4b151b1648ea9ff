#pragma once

#include <cstdint>
#include <vector>

namespace vandrel {

/// Spreads numbers of 1, 2, 4 or 8 bits, the first in an octet's highest bits, to one an octet.
void unpackRow(const std::uint8_t *packed, int bits, int count, std::uint8_t *numbers);

/// The way back: rows of ceil(count * bits / 8) octets, the last filled up with zeros.
void packRow(const std::uint8_t *numbers, int bits, int count, std::uint8_t *packed);

/// The octets that so many numbers take packed.
inline std::int64_t packedLength(std::int64_t count, int bits)
{
    return (count * bits + 7) / 8;
}

} // namespace vandrel
