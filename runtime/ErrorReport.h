#pragma once

#include <functional>

#include "runtime/RuntimeError.h"

namespace vandrel {

/// Shows the default error box for a failure that no handler trapped, then ends the program at once with exit
/// status 1; no unload handler runs. A second failure while the box is open is dropped.
void reportAndEnd(const RuntimeError &failure);

/// Turns the exception in flight into a RuntimeError: itself, Out of memory (7), or Internal error (51) with
/// the exception's own text. Call only from a catch clause.
RuntimeError currentFailure();

/// What ends the program. A test replaces it to observe the end; the replacement may return.
using ProgramEnd = std::function<void(int status)>;
void setProgramEnd(ProgramEnd end);

/// Ends the program at once, closing every window without running its unload handler.
void endProgram(int status);

} // namespace vandrel
