#include "tests/platform/net/SocketReset.h"

#include <sys/socket.h>

namespace vandrel {

void resetWhenClosed(qintptr socket)
{
    const linger atOnce{1, 0};
    setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

} // namespace vandrel
