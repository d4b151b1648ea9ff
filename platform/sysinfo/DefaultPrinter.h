#pragma once

#include <QString>

namespace vandrel {

/// The name of the print system's default printer; empty when there is none, or when the print system does not answer
/// within a second (a print server on another machine may be away).
QString defaultPrinterName();

} // namespace vandrel
