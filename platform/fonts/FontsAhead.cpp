#include "platform/fonts/FontsAhead.h"

#include <fontconfig/fontconfig.h>

namespace vandrel {

// The library lets several threads begin at once: who comes second takes what the first has read.
FontsAhead::FontsAhead() : m_read(std::async(std::launch::async, [] { return FcInit() == FcTrue; })) { }

} // namespace vandrel
