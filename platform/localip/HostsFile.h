#pragma once

#include <QByteArray>

namespace vandrel {

/// The system's table of hosts, its first megabyte at most; empty when it cannot be read.
QByteArray systemHostsFile();

} // namespace vandrel
