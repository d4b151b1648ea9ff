#include "platform/net/ConnectionRace.h"

#include <algorithm>
#include <utility>

#include <QNetworkProxy>

namespace vandrel {

namespace {

// A hostile name server may list thousands.
constexpr qsizetype mostAddresses = 16;
constexpr qint64 readBuffer = 1024 * 1024;

// The resolver's order with the families in turn, so that one broken family costs one wait.
QList<QHostAddress> familiesInTurn(const QList<QHostAddress> &found)
{
    if (found.isEmpty())
        return {};
    const auto first = found.first().protocol();
    QList<QHostAddress> ordered[2];
    for (const QHostAddress &address : found)
        ordered[address.protocol() == first ? 0 : 1] += address;
    QList<QHostAddress> mixed;
    for (qsizetype i = 0; i < std::max(ordered[0].size(), ordered[1].size()); ++i) {
        for (const QList<QHostAddress> &family : std::as_const(ordered)) {
            if (i < family.size())
                mixed += family.at(i);
        }
    }
    return mixed.mid(0, mostAddresses);
}

} // namespace

QSslSocket *makeSocket(QObject *parent)
{
    auto *socket = new QSslSocket(parent);
    socket->setProxy(QNetworkProxy::NoProxy);
    socket->setReadBufferSize(readBuffer);
    return socket;
}

void ConnectionRace::start(const QString &host, quint16 port, int patience)
{
    prepare(host, port, patience);
    QHostInfo::lookupHost(host, this,
                          [this](const QHostInfo &found) { begin(found.addresses(), found.errorString()); });
}

void ConnectionRace::startWith(const QString &host,
                               const QList<QHostAddress> &addresses,
                               quint16 port,
                               int patience)
{
    prepare(host, port, patience);
    QMetaObject::invokeMethod(
        this, [this, addresses] { begin(addresses, tr("it has no address")); }, Qt::QueuedConnection);
}

void ConnectionRace::prepare(const QString &host, quint16 port, int patience)
{
    m_host = host;
    m_port = port;
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this, &ConnectionRace::tryNext);
}

void ConnectionRace::begin(const QList<QHostAddress> &addresses, const QString &problem)
{
    if (m_stopped)
        return;
    m_waiting = familiesInTurn(addresses);
    if (m_waiting.isEmpty())
        Q_EMIT lost(true, tr("The server \"%1\" was not found: %2.").arg(m_host, problem));
    else
        tryNext();
}

void ConnectionRace::tryNext()
{
    if (m_waiting.isEmpty())
        return;
    const QHostAddress address = m_waiting.takeFirst();
    QSslSocket *socket = makeSocket(this);
    m_attempts += socket;
    // Queued, so that a socket is never destroyed inside one of its own functions.
    connect(
        socket, &QSslSocket::connected, this, [this, socket] { attemptConnected(socket); },
        Qt::QueuedConnection);
    connect(
        socket, &QSslSocket::errorOccurred, this, [this, socket, address] { attemptFailed(socket, address); },
        Qt::QueuedConnection);
    socket->connectToHost(address, m_port);
    m_patience.start();
    Q_EMIT trying(tr("%1 port %2").arg(address.toString(), QString::number(m_port)));
}

void ConnectionRace::attemptConnected(QSslSocket *socket)
{
    // The peer may have gone again meanwhile, which comes as the next event.
    if (!m_attempts.contains(socket) || socket->state() != QAbstractSocket::ConnectedState)
        return;
    m_attempts.removeOne(socket);
    socket->disconnect(this);
    socket->setParent(nullptr);
    stop();
    Q_EMIT won(socket);
}

void ConnectionRace::attemptFailed(QSslSocket *socket, const QHostAddress &address)
{
    if (!m_attempts.removeOne(socket))
        return;
    m_failures += tr("%1: %2").arg(address.toString(), socket->errorString());
    socket->deleteLater();
    if (!m_waiting.isEmpty()) {
        tryNext();
    } else if (m_attempts.isEmpty()) {
        Q_EMIT lost(false,
                    tr("\"%1\" does not answer on port %2 (%3).")
                        .arg(m_host)
                        .arg(m_port)
                        .arg(m_failures.join(QStringLiteral("; "))));
    }
}

void ConnectionRace::stop()
{
    m_stopped = true;
    m_patience.stop();
    m_waiting.clear();
    qDeleteAll(m_attempts);
    m_attempts.clear();
}

} // namespace vandrel
