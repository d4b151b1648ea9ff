#include <fcntl.h>
#include <linux/sockios.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include "platform/net/SocketEnd.h"

namespace vandrel {

qintptr duplicateSocket(qintptr descriptor)
{
    return fcntl(static_cast<int>(descriptor), F_DUPFD_CLOEXEC, 0);
}

void closeSocket(qintptr descriptor)
{
    close(static_cast<int>(descriptor));
}

void endSending(qintptr descriptor)
{
    shutdown(static_cast<int>(descriptor), SHUT_WR);
}

qsizetype sendAtOnce(qintptr descriptor, QByteArrayView octets)
{
    const ssize_t sent = send(static_cast<int>(descriptor), octets.data(),
                              static_cast<std::size_t>(octets.size()), MSG_DONTWAIT | MSG_NOSIGNAL);
    return sent > 0 ? sent : 0;
}

void limitUnsent(qintptr descriptor, int octets)
{
    setsockopt(static_cast<int>(descriptor), IPPROTO_TCP, TCP_NOTSENT_LOWAT, &octets, sizeof octets);
}

int unconfirmedOctets(qintptr descriptor)
{
    int octets = 0;
    return ioctl(static_cast<int>(descriptor), SIOCOUTQ, &octets) == 0 ? octets : 0;
}

} // namespace vandrel
