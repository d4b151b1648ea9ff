#include "platform/net/SocketFarewell.h"

#include <algorithm>

#include <QNetworkProxy>

#include "platform/net/SocketEnd.h"

namespace vandrel {

namespace {

constexpr int checkInterval = 250;

} // namespace

SocketFarewell::SocketFarewell(int patience) : m_patience(patience)
{
    m_twin.setProxy(QNetworkProxy::NoProxy);
    connect(&m_twin, &QTcpSocket::readyRead, this, [this] { m_twin.skip(m_twin.bytesAvailable()); });
    connect(&m_twin, &QTcpSocket::disconnected, this, &SocketFarewell::done, Qt::QueuedConnection);
    m_checks.setInterval(std::min(checkInterval, patience));
    connect(&m_checks, &QTimer::timeout, this, &SocketFarewell::check);
}

bool SocketFarewell::begin(QSslSocket &socket)
{
    const qintptr twin = duplicateSocket(socket.socketDescriptor());
    if (twin < 0)
        return false;
    if (!m_twin.setSocketDescriptor(twin)) {
        closeSocket(twin);
        return false;
    }
    connect(&socket, &QSslSocket::disconnected, this, [this] {
        if (m_twin.state() == QAbstractSocket::ConnectedState)
            endSending(m_twin.socketDescriptor());
    });
    m_unconfirmed = unconfirmedOctets(m_twin.socketDescriptor());
    m_checks.start();
    socket.disconnectFromHost();
    return true;
}

void SocketFarewell::check()
{
    const int unconfirmed = unconfirmedOctets(m_twin.socketDescriptor());
    m_quiet = unconfirmed == m_unconfirmed ? m_quiet + m_checks.interval() : 0;
    m_unconfirmed = unconfirmed;
    if (m_quiet >= m_patience)
        Q_EMIT done();
}

} // namespace vandrel
