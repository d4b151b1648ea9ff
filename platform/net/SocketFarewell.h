#pragma once

#include <QObject>
#include <QSslSocket>
#include <QTcpSocket>
#include <QTimer>

namespace vandrel {

/// Ends a connection from this side so that the peer gets everything, and gets it as a whole: the end is announced
/// (the end of TLS first, where there is TLS), and the connection is kept until the peer has ended its side, too. A
/// socket that is simply closed is reset by whatever still arrives, such as session tickets, and a reset makes the
/// peer lose what it has not read yet.
class SocketFarewell : public QObject
{
    Q_OBJECT

public:
    /// `patience`: how long, in milliseconds, the peer may confirm nothing more and not end its side.
    explicit SocketFarewell(int patience);

    /// Begins. The socket has sent everything that it had to send, and is closed by this. done() follows; false where
    /// the system has no means, and nothing was done.
    bool begin(QSslSocket &socket);

Q_SIGNALS:
    /// The peer has ended its side, or the patience is over.
    void done();

private:
    void check();

    /// The same connection once more, which outlives the socket.
    QTcpSocket m_twin;
    QTimer m_checks;
    int m_patience;
    int m_quiet = 0;
    int m_unconfirmed = 0;
};

} // namespace vandrel
