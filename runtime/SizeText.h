#pragma once

#include <QString>

namespace vandrel {

/// A size in octets as people read it, in units of 1000 with one decimal: "1.5 kB", "0 bytes". Independent of the
/// locale.
QString sizeText(qint64 octets);

} // namespace vandrel
