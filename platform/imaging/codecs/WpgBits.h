#pragma once

#include <vector>

#include "platform/imaging/codecs/Decoding.h"
#include "platform/imaging/codecs/OctetReader.h"

namespace vandrel {

/// The packed rows of a bitmap record.
struct PackedPixels {
    std::vector<std::uint8_t> octets;
    std::int64_t rowLength = 0;
    int rows = 0;
    /// How many rows the data gave.
    int rowsRead = 0;
};

/// Reads the run-length code of version 1: counts of octets, of FFh, and repeated rows. `end` is where the record ends.
void readWpg1Runs(OctetReader &file, qint64 end, PackedPixels &pixels);
/// Reads that of version 2, whose runs are of units of one or more octets.
void readWpg2Runs(OctetReader &file, qint64 end, PackedPixels &pixels);

} // namespace vandrel
