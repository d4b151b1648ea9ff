#include "platform/net/SocketLink.h"

#include <utility>

#include <QElapsedTimer>

#include "platform/net/SocketEnd.h"
#include "platform/net/TlsTrust.h"

namespace vandrel {

namespace {

// One turn of deliveries: short enough that the window stays alive, long enough that turns cost nothing.
constexpr qint64 longestTurn = 8;
constexpr qsizetype largestTurn = 2 * 1024 * 1024;
constexpr qsizetype slice = 128 * 1024;
// The toolkit decrypts all that it has read in one go and by way of several buffers: so much of it stays in the
// processor's cache, and in memory that need not be asked of the system anew each time.
constexpr qint64 encryptedReadBuffer = slice;
// What waits in the system for the network. More is sent no sooner, but has left the processor's cache by then, and
// counts as sent when it is not: the system takes megabytes where it may.
constexpr int unsentInSystem = 128 * 1024;

} // namespace

SocketLink::SocketLink(LineConnection &owner, bool implicitTls)
    : m_owner(owner), m_limits(owner.limits()), m_host(owner.host()), m_tlsAsked(implicitTls)
{
    for (QTimer *timer : {&m_connecting, &m_idle, &m_closing})
        timer->setSingleShot(true);
    connect(&m_connecting, &QTimer::timeout, this, &SocketLink::connectingTimedOut);
    connect(&m_idle, &QTimer::timeout, this, &SocketLink::idleTimedOut);
    connect(&m_closing, &QTimer::timeout, this, &SocketLink::finish);
    m_nextTurn.setSingleShot(true);
    connect(&m_nextTurn, &QTimer::timeout, this, &SocketLink::deliverTurn);
    m_connecting.setInterval(m_limits.connecting);
    m_closing.setInterval(m_limits.closing);
}

// --- Connecting -------------------------------------------------------------------------------------------------

void SocketLink::open(quint16 port)
{
    m_connecting.start();
    m_race = std::make_unique<ConnectionRace>();
    connect(m_race.get(), &ConnectionRace::trying, this, [this](const QString &where) {
        Q_EMIT m_owner.progress(tr("Connecting to %1 (%2)...").arg(m_host, where));
    });
    connect(m_race.get(), &ConnectionRace::won, this, &SocketLink::useSocket);
    connect(m_race.get(), &ConnectionRace::lost, this, [this](bool unknown, const QString &text) {
        fail(unknown ? LineConnection::Failure::Lookup : LineConnection::Failure::Refused, text);
    });
    // A socket that may be encrypted later loads what TLS needs as soon as it is made.
    whenTlsIsLoaded(this, [this, port] {
        if (m_phase == Phase::Connecting)
            m_race->start(m_host, port, m_limits.nextAddress);
    });
}

bool SocketLink::adopt(qintptr descriptor)
{
    std::unique_ptr<QSslSocket> socket(makeSocket(nullptr));
    if (!socket->setSocketDescriptor(descriptor))
        return false;
    m_connecting.start();
    QMetaObject::invokeMethod(
        this, [this, taken = socket.release()] { useSocket(taken); }, Qt::QueuedConnection);
    return true;
}

void SocketLink::useSocket(QSslSocket *socket)
{
    m_socket.reset(socket);
    connectSocket();
    m_socket->setSocketOption(QAbstractSocket::LowDelayOption, 1);
    m_socket->setSocketOption(QAbstractSocket::KeepAliveOption, 1);
    limitUnsent(m_socket->socketDescriptor(), unsentInSystem);
    if (m_tlsAsked) {
        beginHandshake();
        return;
    }
    m_connecting.stop();
    m_phase = Phase::Ready;
    // What came before the signals were connected has had its readyRead already.
    postTurn();
    Q_EMIT m_owner.connected();
}

void SocketLink::connectSocket()
{
    QSslSocket *socket = m_socket.get();
    // These two only take down what is gone by the time a queued call arrives.
    connect(socket, &QSslSocket::sslErrors, this,
            [this](const QList<QSslError> &errors) { m_certificateErrors = errors; });
    connect(socket, &QSslSocket::errorOccurred, this, &SocketLink::noteError);

    connect(socket, &QSslSocket::encrypted, this, &SocketLink::handshakeDone, Qt::QueuedConnection);
    connect(socket, &QSslSocket::readyRead, this, &SocketLink::postTurn);
    connect(socket, &QSslSocket::errorOccurred, this, &SocketLink::socketFailed, Qt::QueuedConnection);
    connect(socket, &QSslSocket::disconnected, this, &SocketLink::socketDisconnected, Qt::QueuedConnection);
    connect(socket, &QSslSocket::bytesWritten, this, &SocketLink::postSent);
    connect(socket, &QSslSocket::encryptedBytesWritten, this, &SocketLink::postSent);
}

void SocketLink::startTls()
{
    if (m_phase != Phase::Ready)
        return;
    m_tlsAsked = true;
    m_idle.stop();
    // A failure must not be heard inside the owner's call.
    QMetaObject::invokeMethod(
        this,
        [this] {
            if (m_phase != Phase::Ready)
                return;
            if (buffered() > 0 || m_socket->bytesAvailable() > 0) {
                fail(LineConnection::Failure::Tls,
                     tr("\"%1\" sent text behind its agreement to encrypt, which may be an attempt to "
                        "interfere "
                        "with the connection.")
                         .arg(m_host));
                return;
            }
            m_connecting.start();
            beginHandshake();
        },
        Qt::QueuedConnection);
    // Until then nothing may be taken for a line.
    m_paused = true;
}

void SocketLink::beginHandshake()
{
    m_phase = Phase::Handshake;
    m_socket->setReadBufferSize(encryptedReadBuffer);
    m_socket->setSslConfiguration(m_owner.tlsConfiguration());
    m_socket->setPeerVerifyName(m_owner.m_tlsHost.isEmpty() ? m_host : m_owner.m_tlsHost);
    Q_EMIT m_owner.progress(tr("Securing the connection to %1...").arg(m_host));
    if (ended())
        return;
    // A peer that has gone already raises nothing more.
    if (m_socket->state() == QAbstractSocket::ConnectedState)
        m_socket->startClientEncryption();
    else
        fail(LineConnection::Failure::Tls, handshakeFailureText());
}

void SocketLink::handshakeDone()
{
    if (m_phase != Phase::Handshake)
        return;
    const bool implicit = !m_paused;
    m_connecting.stop();
    m_phase = Phase::Ready;
    m_paused = false;
    postTurn();
    if (implicit)
        Q_EMIT m_owner.connected();
    else
        Q_EMIT m_owner.encrypted();
}

// --- Ends -------------------------------------------------------------------------------------------------------

// The end that TLS announces is an error of the encrypted socket alone; one that comes from below is an error of the
// socket under it as well. Only now can they be told apart: afterwards both are closed.
void SocketLink::noteError(QAbstractSocket::SocketError error)
{
    if (error == QAbstractSocket::RemoteHostClosedError) {
        const auto *below = m_socket->findChild<QTcpSocket *>();
        if (!m_socket->isEncrypted() || (below && below->error() != error))
            m_endAnnounced = true;
        m_peerEnded = true;
    } else if (m_brokenText.isEmpty() && !m_peerEnded) {
        m_brokenText = m_socket->errorString();
    }
}

void SocketLink::socketFailed()
{
    if (m_phase == Phase::Handshake)
        fail(LineConnection::Failure::Tls, handshakeFailureText());
    else if (m_phase == Phase::Closing && !m_farewell)
        finish();
    else if (m_phase == Phase::Ready)
        postTurn();
}

QString SocketLink::handshakeFailureText() const
{
    if (!m_certificateErrors.isEmpty())
        return certificateFailureText(m_owner.m_tlsHost.isEmpty() ? m_host : m_owner.m_tlsHost,
                                      m_certificateErrors);
    const QString reason = m_peerEnded ? tr("the server ended the connection") : m_socket->errorString();
    return tr("The connection to \"%1\" could not be encrypted: %2.").arg(m_host, reason);
}

void SocketLink::socketDisconnected()
{
    if (m_phase == Phase::Closing && !m_farewell)
        finish();
    else if (m_phase == Phase::Ready)
        postTurn();
}

void SocketLink::finishIfPeerEnded()
{
    if (m_phase != Phase::Ready || m_delivering || m_paused || m_socket->bytesAvailable() > 0)
        return;
    if (!m_brokenText.isEmpty())
        fail(LineConnection::Failure::Lost,
             tr("The connection to \"%1\" broke: %2.").arg(m_host, m_brokenText));
    else if (m_peerEnded || m_socket->state() == QAbstractSocket::UnconnectedState)
        finish();
}

void SocketLink::fail(LineConnection::Failure failure, const QString &text)
{
    if (ended())
        return;
    LineConnection &owner = m_owner;
    owner.end(false);
    Q_EMIT owner.failed(failure, text);
}

void SocketLink::finish()
{
    if (ended())
        return;
    LineConnection &owner = m_owner;
    owner.end(m_endAnnounced);
    Q_EMIT owner.closed();
}

void SocketLink::end()
{
    m_phase = Phase::Ended;
    for (QTimer *timer : {&m_connecting, &m_idle, &m_closing, &m_nextTurn})
        timer->stop();
    if (m_race) {
        m_race->disconnect(this);
        m_race->stop();
        m_race.release()->deleteLater();
    }
    if (m_farewell) {
        m_farewell->disconnect(this);
        m_farewell.release()->deleteLater();
    }
    m_room.reset();
    if (m_socket) {
        m_socket->disconnect(this);
        m_socket->abort();
    }
}

void SocketLink::close()
{
    if (m_phase != Phase::Ready) {
        // There is nothing to send, and nobody to wait for.
        m_phase = m_phase == Phase::Ended ? m_phase : Phase::Closing;
        m_connecting.stop();
        m_closing.start(0);
        return;
    }
    m_phase = Phase::Closing;
    m_room.reset();
    m_idle.stop();
    m_closing.start();
    m_socket->disconnectFromHost();
}

void SocketLink::finishSending()
{
    if (m_phase != Phase::Ready) {
        close();
        return;
    }
    m_farewell = std::make_unique<SocketFarewell>(m_limits.closing);
    connect(m_farewell.get(), &SocketFarewell::done, this, &SocketLink::finish);
    m_phase = Phase::Closing;
    m_room.reset();
    m_idle.stop();
    if (m_farewell->begin(*m_socket))
        return;
    m_farewell.reset();
    m_closing.start();
    m_socket->disconnectFromHost();
}

void SocketLink::connectingTimedOut()
{
    const int seconds = m_limits.connecting / 1000;
    fail(LineConnection::Failure::TimedOut,
         m_phase == Phase::Handshake
             ? tr("The connection to \"%1\" was not encrypted within %n second(s).", nullptr, seconds)
                   .arg(m_host)
             : tr("\"%1\" could not be reached within %n second(s).", nullptr, seconds).arg(m_host));
}

void SocketLink::idleTimedOut()
{
    const int seconds = m_idle.interval() / 1000;
    fail(LineConnection::Failure::TimedOut,
         tr("Nothing came from \"%1\" for %n second(s) while waiting for %2.", nullptr, seconds)
             .arg(m_host, m_awaited));
}

// --- Writing ----------------------------------------------------------------------------------------------------

bool SocketLink::write(QByteArrayView octets)
{
    if (!hasRoom())
        return false;
    const QByteArrayView rest = octets.sliced(sendPlainly(octets));
    m_socket->write(rest.data(), rest.size());
    noteWritten();
    return true;
}

qsizetype SocketLink::writeSome(const QByteArray &octets, qsizetype from)
{
    if (!hasRoom())
        return 0;
    const qsizetype rest = octets.size() - from;
    const qsizetype sent = sendPlainly(QByteArrayView(octets).sliced(from));
    if (sent == rest || (canSendPlainly() && awaitRoom()))
        return sent;
    // A large array as a whole is shared with the toolkit's buffer, not copied into it.
    if (from + sent == 0)
        m_socket->write(octets);
    else
        m_socket->write(octets.constData() + from + sent, rest - sent);
    noteWritten();
    return rest;
}

bool SocketLink::hasRoom()
{
    if (m_phase != Phase::Ready)
        return false;
    m_full = unsent() > m_limits.unsent;
    return !m_full;
}

void SocketLink::noteWritten()
{
    // While it is in the processor's cache.
    if (m_socket->isEncrypted())
        m_socket->flush();
    m_full = unsent() > m_limits.unsent;
}

bool SocketLink::awaitRoom()
{
    if (!m_room) {
        m_room = std::make_unique<SocketRoom>(m_socket->socketDescriptor());
        connect(m_room.get(), &SocketRoom::available, this, &SocketLink::postSent);
    }
    return m_room->await();
}

// What goes out as it is need not be copied into the toolkit's buffer first, unless something waits there.
bool SocketLink::canSendPlainly() const
{
    return m_socket->mode() == QSslSocket::UnencryptedMode && m_socket->bytesToWrite() == 0;
}

qsizetype SocketLink::sendPlainly(QByteArrayView octets)
{
    if (!canSendPlainly())
        return 0;
    const qsizetype sent = sendAtOnce(m_socket->socketDescriptor(), octets);
    if (sent > 0)
        postSent();
    return sent;
}

void SocketLink::flush()
{
    if (m_phase == Phase::Ready)
        m_socket->flush();
}

qint64 SocketLink::unsent() const
{
    return m_socket ? m_socket->bytesToWrite() + m_socket->encryptedBytesToWrite() : 0;
}

// An encrypted socket tells of everything twice.
void SocketLink::postSent()
{
    if (!std::exchange(m_sentPosted, true))
        QMetaObject::invokeMethod(this, &SocketLink::somethingSent, Qt::QueuedConnection);
}

void SocketLink::somethingSent()
{
    m_sentPosted = false;
    if (m_phase != Phase::Ready)
        return;
    if (m_idle.isActive())
        m_idle.start();
    const qint64 waiting = unsent();
    Q_EMIT m_owner.sent(waiting);
    if (m_phase == Phase::Ready && m_full && waiting <= m_limits.unsent / 2) {
        m_full = false;
        Q_EMIT m_owner.drained();
    }
}

// --- Reading ----------------------------------------------------------------------------------------------------

void SocketLink::await(const QString &what, int milliseconds)
{
    m_awaited = what;
    m_idle.start(milliseconds > 0 ? milliseconds : m_limits.idle);
}

void SocketLink::stopAwaiting()
{
    m_idle.stop();
}

void SocketLink::setReading(LineConnection::Reading reading)
{
    m_reading = reading;
    postTurn();
}

void SocketLink::unread(qsizetype count)
{
    m_position -= qBound<qsizetype>(0, count, m_position);
}

void SocketLink::setPaused(bool paused)
{
    m_paused = paused;
    if (!paused)
        postTurn();
}

void SocketLink::postTurn()
{
    if (m_turnPosted || m_nextTurn.isActive() || m_phase != Phase::Ready)
        return;
    m_turnPosted = true;
    QMetaObject::invokeMethod(this, &SocketLink::deliverTurn, Qt::QueuedConnection);
}

void SocketLink::deliverTurn()
{
    m_turnPosted = false;
    // A handler may run an event loop of its own; the rest is delivered when it has returned.
    if (m_phase != Phase::Ready || m_paused || m_delivering)
        return;
    m_delivering = true;
    m_readInTurn = 0;
    deliverSlices();
    m_delivering = false;
    if (m_phase == Phase::Ready && mayHaveMore())
        postTurn();
    else
        finishIfPeerEnded();
}

// Reading makes room, and what is decrypted into it has not arrived before the next turn. After little was read, all
// that follows is told of by the socket.
bool SocketLink::mayHaveMore() const
{
    return m_readInTurn >= slice
        || (m_readInTurn > 0
            && (m_peerEnded || !m_brokenText.isEmpty() || m_socket->encryptedBytesAvailable() > 0
                || m_socket->state() != QAbstractSocket::ConnectedState));
}

void SocketLink::deliverSlices()
{
    QElapsedTimer turn;
    turn.start();
    qsizetype delivered = 0;
    while (m_phase == Phase::Ready && !m_paused) {
        const qsizetype before = m_position;
        if (!deliverNext()) {
            if (m_phase != Phase::Ready || !refill())
                return;
            continue;
        }
        delivered += qMax<qsizetype>(0, m_position - before);
        // A call posted now would still run before the event loop looks at anything else; a timer does not.
        if (delivered >= largestTurn || turn.elapsed() >= longestTurn) {
            m_nextTurn.start(0);
            return;
        }
    }
}

bool SocketLink::deliverNext()
{
    return m_reading == LineConnection::Reading::Lines ? deliverLine() : deliverBlock();
}

bool SocketLink::deliverLine()
{
    const qsizetype end = m_buffer.indexOf('\n', m_position);
    const qsizetype length = (end < 0 ? m_buffer.size() : end + 1) - m_position;
    if (length > m_limits.line) {
        fail(LineConnection::Failure::Protocol,
             tr("\"%1\" sent a line of more than %2 octets.").arg(m_host, QString::number(m_limits.line)));
        return false;
    }
    if (end < 0)
        return false;
    m_carriageReturn = end > m_position && m_buffer.at(end - 1) == '\r';
    const QByteArray line = m_buffer.mid(m_position, end - m_position - (m_carriageReturn ? 1 : 0));
    m_position = end + 1;
    // Only whole lines count as progress: a server that sends an octet now and then does not hold us for ever.
    if (m_idle.isActive())
        m_idle.start();
    Q_EMIT m_owner.lineReceived(line);
    return true;
}

bool SocketLink::deliverBlock()
{
    if (buffered() == 0)
        return false;
    const QByteArrayView block(m_buffer.constData() + m_position, buffered());
    m_position = m_buffer.size();
    if (m_idle.isActive())
        m_idle.start();
    Q_EMIT m_owner.blockReceived(block);
    return true;
}

// Reads one slice behind what is buffered; false when the socket has nothing.
bool SocketLink::refill()
{
    if (m_socket->bytesAvailable() <= 0)
        return false;
    if (m_position > 0) {
        m_buffer.remove(0, m_position);
        m_position = 0;
    }
    const qsizetype kept = m_buffer.size();
    m_buffer.resize(kept + slice);
    const qint64 got = m_socket->read(m_buffer.data() + kept, slice);
    m_buffer.resize(kept + qMax<qint64>(0, got));
    m_readInTurn += qMax<qint64>(0, got);
    return got > 0;
}

} // namespace vandrel
