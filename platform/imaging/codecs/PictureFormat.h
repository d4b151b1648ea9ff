#pragma once

#include <QByteArrayView>
#include <QStringView>

namespace vandrel {

/// The kinds of picture files that can be opened.
enum class PictureFormat { Unknown, Bmp, Dib, Pcx, Wmf, Wpg, Jpeg, Tiff };

/// How many of a file's first octets pictureFormat() wants to see.
inline constexpr qsizetype octetsThatTell = 64;

/// The format of a file by its first octets; the extension (without the dot, in any case) decides only where those leave
/// a choice.
PictureFormat pictureFormat(QByteArrayView beginning, QStringView extension);

} // namespace vandrel
