#include "platform/net/SocketRoom.h"

#include "platform/net/SocketEnd.h"

namespace vandrel {

SocketRoom::SocketRoom(qintptr socket) : m_twin(duplicateSocket(socket))
{
    if (m_twin < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_twin, QSocketNotifier::Write);
    m_notifier->setEnabled(false);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, [this] {
        m_notifier->setEnabled(false);
        Q_EMIT available();
    });
}

SocketRoom::~SocketRoom()
{
    m_notifier.reset();
    if (m_twin >= 0)
        closeSocket(m_twin);
}

bool SocketRoom::await()
{
    if (m_notifier)
        m_notifier->setEnabled(true);
    return m_notifier != nullptr;
}

} // namespace vandrel
