#pragma once

namespace vandrel {

/// Whether the program runs with the rights of root, with which the engine's sandbox does not work.
bool runsAsRoot();

/// Whether the system lets an ordinary program make the namespaces that the sandbox is made of.
bool sandboxCanBeMade();

} // namespace vandrel
