#pragma once

#include <QByteArray>

namespace vandrel::test {

/// A small file system in memory at a folder, where the system lets us have one, as it lets root. Nobody sees it but
/// the thread that made it and those which that thread starts from then on.
class SmallDisk
{
public:
    /// `folder` exists; `options` are those of mounting.
    explicit SmallDisk(QByteArray folder, const char *options = "size=1m");
    ~SmallDisk();
    SmallDisk(const SmallDisk &) = delete;
    SmallDisk &operator=(const SmallDisk &) = delete;

    bool isThere() const { return m_isThere; }
    /// Lets nobody write to it any more; false where the system refuses.
    bool protect() const;

private:
    QByteArray m_folder;
    bool m_isThere;
};

} // namespace vandrel::test
