#pragma once

#include <QByteArray>

#include "controls/DocumentFiles.h"

namespace vandrel {

/// How a plain text is encoded.
enum class TextEncoding {
    Utf8,
    Utf16LittleEndian,
    Utf16BigEndian,
    Utf32LittleEndian,
    Utf32BigEndian,
    Windows1252
};

/// Whether octets are a whole text or its beginning, which may end inside a character.
enum class Extent { Whole, Beginning };

/// The encoding of a text: by its byte order mark; else UTF-16 when zeros alternate with other octets; else
/// UTF-8 when it is that strictly; else Windows-1252.
TextEncoding detectEncoding(const QByteArray &octets, Extent extent);

/// The largest plain text that is read, in octets.
inline constexpr qsizetype maximumTextOctets = 256 * 1024 * 1024;
/// Lines longer than this, in UTF-16 units, are named to the user, since editing them is slow.
inline constexpr qsizetype longLine = 100'000;

/// Makes a document of a plain text. Line ends may be CR LF, CR or LF. The five octets that Windows-1252 leaves
/// undefined become the C1 characters of the same value. Characters that no text may hold (zeros, the
/// toolkit's own marks, broken encodings) become U+FFFD. Works on any thread, tells its progress in octets,
/// and returns a null document when cancelled. Raises Invalid file format (321) beyond maximumTextOctets.
LoadedDocument readPlainText(const QByteArray &octets, DocumentProgress &progress);

} // namespace vandrel
