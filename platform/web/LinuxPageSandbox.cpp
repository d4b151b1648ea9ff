#include "platform/web/PageSandbox.h"

#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vandrel {

bool runsAsRoot()
{
    return ::geteuid() == 0;
}

// Tried in a child, which has nothing to lose by it.
bool sandboxCanBeMade()
{
    const pid_t child = ::fork();
    if (child < 0)
        return false;
    if (child == 0)
        ::_exit(::unshare(CLONE_NEWUSER) == 0 ? 0 : 1);
    int status = 0;
    return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

} // namespace vandrel
