#include <csignal>

#include <sys/resource.h>
#include <unistd.h>

#include "tests/platform/filesystem/Restrictions.h"

namespace vandrel::test {

namespace {

// Sets how large a file may grow, and returns how large it might before.
qint64 limitFileSize(qint64 octets)
{
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    const auto before = static_cast<qint64>(limit.rlim_cur);
    limit.rlim_cur = static_cast<rlim_t>(octets);
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return before;
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
    : m_handler(std::signal(SIGXFSZ, SIG_IGN)), m_before(limitFileSize(octets))
{ }

FileSizeLimit::~FileSizeLimit()
{
    limitFileSize(m_before);
    std::signal(SIGXFSZ, m_handler);
}

} // namespace vandrel::test
