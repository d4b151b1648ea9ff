#include "platform/imaging/codecs/PackedRows.h"

#include <algorithm>
#include <cstring>

namespace vandrel {

void unpackRow(const std::uint8_t *packed, int bits, int count, std::uint8_t *numbers)
{
    if (bits == 8) {
        std::memcpy(numbers, packed, static_cast<std::size_t>(count));
        return;
    }
    const int perOctet = 8 / bits;
    const auto mask = static_cast<std::uint8_t>((1 << bits) - 1);
    for (int first = 0; first < count; first += perOctet, ++packed) {
        const int here = std::min(perOctet, count - first);
        for (int index = 0; index < here; ++index)
            numbers[first + index] = static_cast<std::uint8_t>(*packed >> (8 - bits * (index + 1)) & mask);
    }
}

void packRow(const std::uint8_t *numbers, int bits, int count, std::uint8_t *packed)
{
    if (bits == 8) {
        std::memcpy(packed, numbers, static_cast<std::size_t>(count));
        return;
    }
    const int perOctet = 8 / bits;
    for (int first = 0; first < count; first += perOctet) {
        const int here = std::min(perOctet, count - first);
        int octet = 0;
        for (int index = 0; index < here; ++index)
            octet |= numbers[first + index] << (8 - bits * (index + 1));
        *packed++ = static_cast<std::uint8_t>(octet);
    }
}

} // namespace vandrel
