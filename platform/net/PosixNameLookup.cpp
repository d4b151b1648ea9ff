#include <memory>

#include <netdb.h>
#include <sys/socket.h>

#include "platform/net/NameLookup.h"

namespace vandrel {

namespace {

constexpr qsizetype mostPerName = 8;

struct FreeAddresses {
    void operator()(addrinfo *list) const { freeaddrinfo(list); }
};

NameAnswer ask(const QString &name)
{
    addrinfo hints{};
    hints.ai_family = AF_UNSPEC;
    // One entry for each address, not one for each kind of socket.
    hints.ai_socktype = SOCK_DGRAM;
    addrinfo *found = nullptr;
    const int failure = getaddrinfo(name.toLatin1().constData(), nullptr, &hints, &found);
    if (failure != 0)
        return {{}, QString::fromLocal8Bit(gai_strerror(failure))};
    const std::unique_ptr<addrinfo, FreeAddresses> list(found);
    NameAnswer answer;
    for (const addrinfo *each = found; each && answer.addresses.size() < mostPerName; each = each->ai_next)
        answer.addresses.append(QHostAddress(each->ai_addr));
    return answer;
}

} // namespace

NameLookup::Resolver NameLookup::systemResolver()
{
    return ask;
}

} // namespace vandrel
