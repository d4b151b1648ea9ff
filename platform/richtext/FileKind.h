#pragma once

#include <QByteArray>
#include <QString>

namespace vandrel {

/// What a file holds, judged by its contents and never by its name.
enum class FileKind { RichText, PlainText };

/// How many of a file's first octets are looked at.
inline constexpr qsizetype fileHeadSize = 64 * 1024;

/// Recognises a file by its first octets (up to fileHeadSize; `head` may be the whole of a shorter file). Rich
/// text begins with "{\rtf" in letters of either case, after blanks or a UTF-8 byte order mark. What is
/// neither that nor a known binary format, and does not look like octets that no text would hold, is text.
/// Raises Invalid file format (321) for a binary format, with a text that names the file, the format and what
/// to do; `shownName` is the DOS-style path.
FileKind recogniseFile(const QByteArray &head, const QString &shownName);

} // namespace vandrel
