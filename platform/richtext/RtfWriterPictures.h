#pragma once

#include <QByteArray>
#include <QTextDocument>
#include <QTextImageFormat>

namespace vandrel {

/// A picture as RTF: the group it was loaded from, untouched; for a picture that came otherwise a \pict of its
/// PNG or JPEG data, other kinds turned into PNG. Empty when the document holds no data for it.
QByteArray rtfPicture(const QTextDocument &document, const QTextImageFormat &format);

} // namespace vandrel
