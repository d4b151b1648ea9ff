#pragma once

#include <functional>

#include "runtime/RuntimeError.h"

namespace vandrel {

/// Shows the default error box for a failure that no handler trapped, then ends the program at once with exit
/// status 1; no unload handler runs. A second failure while the box is open is dropped. Where no box can be
/// shown, the failure is written to the standard error output instead. Never throws.
///
/// On another thread than the user interface's, the report is handed over to that thread and the call returns.
void reportAndEnd(const RuntimeError &failure) noexcept;

/// Reports the exception in flight (see currentFailure). Call only from a catch clause.
void reportCurrentFailure() noexcept;

/// True while the error box is open: the program's handlers have ended, only the box still answers.
bool isReportingFailure();

/// Turns the exception in flight into a RuntimeError: itself, Out of memory (7), or Internal error (51) with
/// the exception's own text. Call only from a catch clause.
RuntimeError currentFailure();

/// What ends the program. A test replaces it to observe the end; the replacement may return. An empty one
/// restores the real end.
using ProgramEnd = std::function<void(int status)>;
void setProgramEnd(ProgramEnd end);

/// Ends the program at once, closing every window without running its unload handler.
void endProgram(int status);

} // namespace vandrel
