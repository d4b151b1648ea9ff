#include <utility>

#include <sched.h>
#include <sys/mount.h>

#include "tests/platform/filesystem/SmallDisk.h"

namespace vandrel::test {

SmallDisk::SmallDisk(QByteArray folder, const char *options)
    : m_folder(std::move(folder)),
      m_isThere(::unshare(CLONE_NEWNS) == 0
                && ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0
                && ::mount("none", m_folder.constData(), "tmpfs", 0, options) == 0)
{ }

SmallDisk::~SmallDisk()
{
    if (m_isThere)
        ::umount2(m_folder.constData(), MNT_DETACH);
}

bool SmallDisk::protect() const
{
    return ::mount(nullptr, m_folder.constData(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr) == 0;
}

} // namespace vandrel::test
