#pragma once

#include <memory>

#include "controls/RichTextDocument.h"

namespace vandrel {

/// Takes the notes' paragraphs out of a part that is to be inserted into `target`, and makes its marks refer to
/// notes there. A note that lost its mark in `target` and reads the same is taken up again: so a mark that is cut
/// out and pasted keeps its note. Returns what is to be inserted at the end of `target`: a break and the paragraphs; null
/// when the part has no notes.
std::unique_ptr<QTextDocument> takeNotes(RichTextDocument &part, const QTextDocument &target);

} // namespace vandrel
