#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// A typed text as lines that each end in LF; CR LF, LF and a lone CR all end a line. Empty for an empty
/// text.
QByteArray textLines(const QString &text);

/// How a text of such lines is carried: as it is, where everything on the way keeps it so, else in whichever
/// of the two encodings is the shorter.
enum class TextEncoding { SevenBit, QuotedPrintable, Base64 };

/// "SevenBit" for ASCII in lines of at most 78 characters that no server on the way would change: no control
/// characters, no blanks at the end of a line, no line that begins with "From ".
TextEncoding textEncoding(const QByteArray &lines);

} // namespace vandrel
