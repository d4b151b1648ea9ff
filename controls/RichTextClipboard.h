#pragma once

#include <memory>

#include <QMimeData>
#include <QTextCursor>

#include "controls/DocumentFiles.h"

namespace vandrel {

/// What the rich-text box puts on the clipboard and drags: the selected text, plain and as RTF.
std::unique_ptr<QMimeData> richTextMimeData(const QTextCursor &selection, const DocumentFiles &files);

/// Whether insertRichTextMimeData() finds anything to insert.
bool hasRichText(const QMimeData &data);

/// Inserts what is on the clipboard in place of the selection, in one undo step: RTF with its formatting,
/// anything else as plain text. Markup of web pages is taken as its text only, so nothing that it names is
/// ever fetched.
void insertRichTextMimeData(QTextCursor cursor, const QMimeData &data, const DocumentFiles &files);

} // namespace vandrel
