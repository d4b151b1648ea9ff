#pragma once

#include <QString>

class QLineEdit;

namespace vandrel {

/// A text on one line: each run of line breaks in it, with the blanks beside them, becomes `separator`; those at either
/// end go. What follows a comma or a semicolon already needs no more than a blank. A text without line breaks is
/// returned as it is. NUL, which no field can carry, counts as a line break.
QString onOneLine(const QString &text, const QString &separator);

/// Keeps what stands in a box on one line, however it gets there: pasted, dropped or assigned. Its change is reported
/// once, with the text as it then is.
void keepOnOneLine(QLineEdit *box, const QString &separator);

} // namespace vandrel
