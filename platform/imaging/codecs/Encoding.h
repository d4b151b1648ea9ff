#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "platform/imaging/codecs/Decoding.h"
#include "platform/imaging/codecs/OctetWriter.h"

namespace vandrel {

/// Octets of a file.
using Octets = std::vector<std::uint8_t>;

/// Works out what the rows of a picture are in a file, in bands on all processors, and writes it in their order. `encode`
/// gets the first row and the one behind the last of a band. Reports progress after each band.
void writeBands(int width,
                int height,
                const std::function<Octets(int first, int end)> &encode,
                OctetWriter &out,
                const FileProgress &progress);

} // namespace vandrel
