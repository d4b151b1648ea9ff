#pragma once

#include <memory>

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QObject>
#include <QSslError>
#include <QSslSocket>
#include <QTimer>

#include "platform/net/ConnectionRace.h"
#include "platform/net/LineConnection.h"
#include "platform/net/SocketFarewell.h"
#include "platform/net/SocketRoom.h"

namespace vandrel {

/// One connection of a LineConnection from open() to its end: the socket, what it has read, and the timers. The
/// socket's signals arrive queued, so that nothing here ever runs inside one of the socket's own functions.
class SocketLink : public QObject
{
    Q_OBJECT

public:
    SocketLink(LineConnection &owner, bool implicitTls);

    void open(quint16 port);
    bool adopt(qintptr descriptor);
    void startTls();
    bool write(QByteArrayView octets);
    qsizetype writeSome(const QByteArray &octets, qsizetype from);
    /// Hands to the system what waits, as far as it takes it, without another turn of the event loop.
    void flush();
    qint64 unsent() const;
    void await(const QString &what, int milliseconds);
    void stopAwaiting();
    void setReading(LineConnection::Reading reading);
    void unread(qsizetype count);
    bool lineHadCarriageReturn() const { return m_carriageReturn; }
    void setPaused(bool paused);
    void close();
    void finishSending();
    /// Ends everything at once; nothing of this link is heard of again.
    void end();

    /// Null before the connection is made.
    const QSslSocket *socket() const { return m_socket.get(); }

private:
    enum class Phase {
        Connecting,
        Handshake,
        Ready,
        Closing,
        Ended,
    };

    void useSocket(QSslSocket *socket);
    void connectSocket();
    void beginHandshake();
    void handshakeDone();
    void noteError(QAbstractSocket::SocketError error);
    void socketFailed();
    QString handshakeFailureText() const;
    void socketDisconnected();
    bool hasRoom();
    void noteWritten();
    bool awaitRoom();
    bool canSendPlainly() const;
    qsizetype sendPlainly(QByteArrayView octets);
    void postSent();
    void somethingSent();
    void connectingTimedOut();
    void idleTimedOut();

    void postTurn();
    void deliverTurn();
    void deliverSlices();
    bool deliverNext();
    bool deliverLine();
    bool deliverBlock();
    bool refill();
    bool mayHaveMore() const;
    qsizetype buffered() const { return m_buffer.size() - m_position; }

    void finishIfPeerEnded();
    void fail(LineConnection::Failure failure, const QString &text);
    void finish();
    bool ended() const { return m_phase == Phase::Ended; }

    LineConnection &m_owner;
    const LineConnection::Limits m_limits;
    const QString m_host;
    bool m_tlsAsked = false;
    Phase m_phase = Phase::Connecting;
    std::unique_ptr<ConnectionRace> m_race;
    std::unique_ptr<QSslSocket> m_socket;
    std::unique_ptr<SocketRoom> m_room;
    std::unique_ptr<SocketFarewell> m_farewell;
    QList<QSslError> m_certificateErrors;

    QTimer m_connecting;
    QTimer m_idle;
    QTimer m_closing;
    QTimer m_nextTurn;
    QString m_awaited;

    LineConnection::Reading m_reading = LineConnection::Reading::Lines;
    // What has been read and not delivered begins at m_position.
    QByteArray m_buffer;
    qsizetype m_position = 0;
    bool m_carriageReturn = true;
    bool m_paused = false;
    bool m_delivering = false;
    bool m_turnPosted = false;
    bool m_sentPosted = false;
    qint64 m_readInTurn = 0;
    bool m_full = false;

    bool m_peerEnded = false;
    bool m_endAnnounced = false;
    // Set where the connection broke rather than ended.
    QString m_brokenText;
};

} // namespace vandrel
