#pragma once

#include <cstddef>

namespace vandrel {

/// Tells the system that a large, aligned block of memory is about to be written from end to end, so that it can give
/// it out in large pages: the first touch of every small page costs more than the copy of a picture. A hint; nothing
/// depends on it.
void preferHugePages(void *memory, std::size_t octets);

} // namespace vandrel
