#pragma once

namespace vandrel {

/// Bounds what this process can do from here on: memory, processor time, and files written, which is none. What it
/// draws may be made to lead it astray. False where the system refuses.
bool limitDrawing();

} // namespace vandrel
