#pragma once

#include <QByteArray>

#include "controls/DocumentFiles.h"

namespace vandrel {

/// What the reader takes on. A document beyond a limit marked "refused" raises Invalid file format (321);
/// beyond the others it is read with less structure, never with less text.
struct RtfLimits {
    qsizetype groups = 4096; ///< open groups at one time that have a state of their own
    qsizetype fonts = 65'536; ///< entries of the font table
    qsizetype colours = 65'536; ///< entries of the colour table
    qsizetype tableCells = 100'000; ///< cells of all tables; further rows are tabbed text
    qsizetype tables = 5'000; ///< tables; further ones are tabbed text
    int tableDepth = 8; ///< tables within tables; deeper ones are tabbed text
    qsizetype characters = 64'000'000; ///< UTF-16 units of the whole text; refused
};

/// What RTF octets are.
enum class RtfExtent {
    Document, ///< a whole file: its last \par is the end of its last paragraph
    Part, ///< cut out of a text: what is behind its last \par, be it nothing, is the beginning of a paragraph
};

/// Makes a document of RTF octets, following the Rich Text Format 1.9.1 with the conventions of
/// RtfPrologue.h. Leading blanks, a UTF-8 byte order mark and NULs are passed over; damage is read around.
/// Raises Invalid file format (321) for octets that do not begin with "{\rtf" and for documents beyond the
/// limits.
///
/// May be called on any thread; the document belongs to the calling one, its undo stack is on and empty.
/// `progress.total` becomes the amount of work, `progress.done` grows towards it. Returns a null document
/// when `progress.cancelled` becomes true.
LoadedDocument readRtf(const QByteArray &rtf,
                       DocumentProgress &progress,
                       RtfExtent extent = RtfExtent::Document,
                       const RtfLimits &limits = {});

/// True when octets begin as RTF does; the first 64 are enough to tell.
bool looksLikeRtf(QByteArrayView start);

} // namespace vandrel
