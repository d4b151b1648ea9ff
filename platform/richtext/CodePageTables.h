#pragma once

#include <array>

#include <QtGlobal>

namespace vandrel {

/// One single-byte code page: the characters of the octets 0x80 to 0xFF. The lower half is ASCII.
struct CodePageTable {
    int page;
    std::array<char16_t, 128> upper;
};

inline constexpr std::size_t codePageCount = 34;

/// Ordered by page number.
extern const std::array<CodePageTable, codePageCount> codePageTables;

} // namespace vandrel
