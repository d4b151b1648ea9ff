#pragma once

namespace vandrel {

/// Starts the MIME library, once for the whole program. To be called before any of its functions, from any
/// thread: the library's own start is not safe against a second thread.
void ensureMimeLibrary();

} // namespace vandrel
