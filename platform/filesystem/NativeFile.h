#pragma once

#include <memory>

#include <QByteArray>
#include <QFile>
#include <QString>

namespace vandrel {

/// Opens a plain file for reading by its native name, which may hold any octets. When there is no file of
/// exactly that name, the one file whose name differs only in the case of its letters is opened instead, in
/// each folder of the path; where several do, none is. Never waits on a pipe or a device: those are refused.
///
/// Raises File not found (53), Path not found (76) for a missing folder, Permission denied (70), Path/File
/// access error (75) for anything but a plain file, and the other errors of systemFailure(). `shownName` is
/// the DOS-style path for the error texts.
std::unique_ptr<QFile> openForReading(const QByteArray &nativePath, const QString &shownName);

/// The same as a descriptor, which the caller closes.
int openDescriptorForReading(const QByteArray &nativePath, const QString &shownName);

} // namespace vandrel
