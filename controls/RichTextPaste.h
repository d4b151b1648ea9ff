#pragma once

#include <QTextCursor>

#include "controls/RichTextDocument.h"

namespace vandrel {

/// Inserts a part that was cut out of another text in place of the selection, in one undo step. The part ends inside
/// its last paragraph, which goes on with what follows the cursor and keeps the paragraph format that stood there;
/// one that stood empty takes the part's. The first paragraph of several brings its format along where the cursor is
/// at the beginning of a paragraph, and joins that paragraph elsewhere. The part's notes go to the end of the document.
/// `part` is used up.
void insertRichText(QTextCursor cursor, RichTextDocument &part);

} // namespace vandrel
