#pragma once

#include <memory>

#include <QObject>
#include <QSocketNotifier>

namespace vandrel {

/// Tells when the system takes more of a connection that is written to past the toolkit, whose socket tells so only of
/// what waits in a buffer of its own. Keeps the connection open as long as it lives.
class SocketRoom : public QObject
{
    Q_OBJECT

public:
    explicit SocketRoom(qintptr socket);
    ~SocketRoom() override;
    SocketRoom(const SocketRoom &) = delete;
    SocketRoom &operator=(const SocketRoom &) = delete;

    /// available() follows once, also when the connection is broken; false where the system has no means to tell.
    [[nodiscard]] bool await();

Q_SIGNALS:
    void available();

private:
    // The event loop watches a descriptor for one purpose only once, and does so for the socket already.
    qintptr m_twin;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

} // namespace vandrel
