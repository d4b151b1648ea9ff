#pragma once

#include <map>
#include <memory>

#include <QByteArray>
#include <QSocketNotifier>

#include "platform/filesystem/DriveTable.h"

namespace vandrel {

/// The drives of a Linux system, from the kernel's table of mounts. No mounted file system is ever asked
/// anything: one whose server is gone would block the asker for good.
class LinuxDriveTable final : public DriveTable
{
    Q_OBJECT

public:
    /// `mountInfo` is the table that is read.
    explicit LinuxDriveTable(DriveView &view, QByteArray mountInfo = "/proc/self/mountinfo");
    ~LinuxDriveTable() override;

    void follow() override;

    /// Reads the table again. A mount keeps its letter as long as the program runs, even while it is away;
    /// once all letters were given, further mounts are found below "z:" alone.
    void refresh();

private:
    QByteArray readTable() const;
    char letterFor(const QByteArray &mountPoint);

    DriveView &m_view;
    const QByteArray m_mountInfo;
    int m_table = -1;
    std::unique_ptr<QSocketNotifier> m_changes;
    std::map<QByteArray, char> m_letters;
};

} // namespace vandrel
