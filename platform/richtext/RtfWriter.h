#pragma once

#include <functional>

#include <QByteArray>
#include <QIODevice>
#include <QTextDocument>

namespace vandrel {

/// Writes a document as RTF (Rich Text Format 1.9.1, 7-bit, Unicode as \uN) with the conventions of
/// RtfPrologue.h, so that reading it again gives the same document, and writing that again the same octets.
///
/// Takes constant memory besides the tables of formats, time linear in the document, and no deeper calls for
/// deeper tables. Called on the document's thread; `betweenBlocks` is called between paragraphs and must not
/// change the document. Writing stops early when the device takes no more: the device knows why.
void writeRtf(const QTextDocument &document, QIODevice &device, const std::function<void()> &betweenBlocks);

/// The part of a document between two positions, clamped to it, as RTF of its own. A part that begins and ends
/// in one cell is that cell's text; any other takes the rows it touches. The end of the last paragraph is
/// written only where the part goes beyond it.
QByteArray writeRtf(const QTextDocument &document, int from, int to);

} // namespace vandrel
