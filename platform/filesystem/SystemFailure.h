#pragma once

#include <QString>

#include "runtime/RuntimeError.h"

namespace vandrel {

/// What was being done to a file when the system refused.
enum class FileAction { Reading, Writing, Deleting };

/// The runtime error for a failed system call: a full disk or quota is 61, missing rights or a read-only file
/// system 70, a folder or anything else that is not a plain file 75, a missing folder 76, a missing file 53,
/// a name the file system cannot hold 52, an unreachable mount 71, and whatever else 57. The text begins with
/// the number's usual one, names the file as the user knows it, and says what can be done.
///
/// `code` is the value of errno after the call. `shownName` is the DOS-style path.
RuntimeError systemFailure(int code, FileAction action, const QString &shownName);

} // namespace vandrel
