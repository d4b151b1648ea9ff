#pragma once

#include <QByteArray>

#include "controls/RichTextDocument.h"

namespace vandrel {

/// Reads the octets between the braces of a {\pict ...} group. PNG, JPEG and device-independent bitmaps give data that
/// can be shown (a bitmap becomes a BMP file); metafiles and other kinds give their size only. The size is always
/// stated: the group's own, or the picture's at 96 dots an inch, or half an inch square.
DocumentPicture readRtfPicture(QByteArrayView group);

} // namespace vandrel
