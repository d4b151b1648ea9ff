#include "platform/ping/EchoWay.h"
#include "platform/ping/LinuxEchoSocket.h"
#include "platform/ping/PosixPingCommand.h"

namespace vandrel {

std::vector<std::shared_ptr<EchoWay>> EchoWay::ofSystem()
{
    return {std::make_shared<LinuxEchoSocket>(LinuxEchoSocket::Kind::Datagram),
            std::make_shared<LinuxEchoSocket>(LinuxEchoSocket::Kind::Raw),
            std::make_shared<PosixPingCommand>()};
}

} // namespace vandrel
