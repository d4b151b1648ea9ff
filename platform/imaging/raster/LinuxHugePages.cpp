#include "platform/imaging/raster/HugePages.h"

#include <sys/mman.h>

namespace vandrel {

void preferHugePages(void *memory, std::size_t octets)
{
    // A system without large pages refuses, and small ones serve as well.
    static_cast<void>(madvise(memory, octets, MADV_HUGEPAGE));
}

} // namespace vandrel
