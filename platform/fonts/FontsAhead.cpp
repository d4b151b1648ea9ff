#include "platform/fonts/FontsAhead.h"

#include <fontconfig/fontconfig.h>

namespace vandrel {

// The library lets several threads begin at once, and keeps what one of them has read for all.
FontsAhead::FontsAhead() : m_read(std::async(std::launch::async, [] { return FcInit() == FcTrue; })) { }

} // namespace vandrel
