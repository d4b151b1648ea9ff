#include "platform/imaging/helper/DrawingLimits.h"

#include <sys/resource.h>

namespace vandrel {

namespace {

#ifdef VANDREL_SANITIZED
// The sanitizers map far more than they use.
constexpr rlim_t mostMemory = RLIM_INFINITY;
#else
constexpr rlim_t mostMemory = rlim_t{1} << 30;
#endif
constexpr rlim_t mostSeconds = 10;

bool limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit bound{most, most};
    return setrlimit(resource, &bound) == 0;
}

} // namespace

bool limitDrawing()
{
    return limit(RLIMIT_AS, mostMemory) && limit(RLIMIT_CPU, mostSeconds) && limit(RLIMIT_FSIZE, 0)
        && limit(RLIMIT_CORE, 0);
}

} // namespace vandrel
