#pragma once

namespace vandrel {

/// Lets pending events of the whole program run, then returns. For loops that must stay as they are and yet
/// keep the window responsive; the caller checks afterwards what the events may have changed.
void yieldToEvents();

} // namespace vandrel
