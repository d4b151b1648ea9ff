#pragma once

#include <optional>

#include <QtGlobal>

class QFile;

namespace vandrel {

/// By what a change of an open file is noticed.
struct FileState {
    qint64 size = 0;
    /// Nanoseconds since 1970.
    qint64 modified = 0;
    /// Which file it is, wherever its name is by now.
    quint64 device = 0;
    quint64 number = 0;

    bool operator==(const FileState &) const = default;
};

/// The state of an open file; nothing when no name leads to it any more, or when it cannot be told.
std::optional<FileState> fileState(const QFile &file);

} // namespace vandrel
