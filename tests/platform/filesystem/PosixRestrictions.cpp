#include <csignal>
#include <fstream>

#include <sys/resource.h>
#include <unistd.h>

#include "tests/platform/filesystem/Restrictions.h"

namespace vandrel::test {

namespace {

// Sets how much there may be of a resource, and returns how much there might before.
qint64 limitTo(qint64 octets, decltype(RLIMIT_FSIZE) resource)
{
    rlimit limit = {};
    ::getrlimit(resource, &limit);
    const auto before = static_cast<qint64>(limit.rlim_cur);
    limit.rlim_cur = static_cast<rlim_t>(octets);
    ::setrlimit(resource, &limit);
    return before;
}

// What of the memory's addresses is taken.
qint64 octetsMapped()
{
    qint64 pages = 0;
    std::ifstream("/proc/self/statm") >> pages;
    return pages * ::sysconf(_SC_PAGESIZE);
}

} // namespace

AsOrdinaryUser::AsOrdinaryUser() : m_wasRoot(::geteuid() == 0)
{
    constexpr uid_t nobody = 65534;
    if (m_wasRoot && (::setegid(nobody) != 0 || ::seteuid(nobody) != 0))
        qFatal("the effective user cannot be changed");
}

AsOrdinaryUser::~AsOrdinaryUser()
{
    if (m_wasRoot && (::seteuid(0) != 0 || ::setegid(0) != 0))
        qFatal("the effective user cannot be restored");
}

FileSizeLimit::FileSizeLimit(qint64 octets)
    : m_handler(std::signal(SIGXFSZ, SIG_IGN)), m_before(limitTo(octets, RLIMIT_FSIZE))
{ }

FileSizeLimit::~FileSizeLimit()
{
    limitTo(m_before, RLIMIT_FSIZE);
    std::signal(SIGXFSZ, m_handler);
}

#ifdef VANDREL_SANITIZED
MemoryCeiling::MemoryCeiling(qint64) : m_before(0) { }

MemoryCeiling::~MemoryCeiling() = default;
#else
MemoryCeiling::MemoryCeiling(qint64 octets) : m_before(limitTo(octetsMapped() + octets, RLIMIT_AS)) { }

MemoryCeiling::~MemoryCeiling()
{
    limitTo(m_before, RLIMIT_AS);
}
#endif

} // namespace vandrel::test
