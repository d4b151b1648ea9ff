#pragma once

#include <QString>

namespace vandrel {

/// One line of at most `longest` characters, and "…" when there was more, that shows no more and nothing else than
/// it says: without control characters, and without those that turn the direction of text around.
QString harmlessLine(QString text, qsizetype longest);

} // namespace vandrel
