#pragma once

namespace vandrel {

/// Makes the process ready for the web engine, before its first profile; further calls do nothing. It may be called long
/// after the first window was shown. Raises Cannot create object (429), with what can be done about it, where the
/// system does not let the engine keep pages apart from the rest of the system.
void prepareEngine();

/// Tells the engine's children apart from the suite's: takes back what prepareEngine() has put into the environment for
/// the engine to read. After the first profile.
void engineHasStarted();

/// False where pages run without their sandbox, since the program runs as root.
bool pagesAreSandboxed();

} // namespace vandrel
