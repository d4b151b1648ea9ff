#pragma once

#include <QHostAddress>
#include <QHostInfo>
#include <QList>
#include <QObject>
#include <QSslSocket>
#include <QStringList>
#include <QTimer>

namespace vandrel {

/// Connects to whichever of a server's addresses answers first (after RFC 8305): IPv6 and IPv4 in turn, the next one
/// begun when the one before has failed or has not answered for a while. Ends with won() or lost(), both from the
/// event loop; destroying it ends all attempts.
class ConnectionRace : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Looks `host` up and begins. `patience` is in milliseconds. Once only.
    void start(const QString &host, quint16 port, int patience);
    /// Begins with addresses that are known already, in the resolver's order; `host` names the server in messages.
    /// Instead of start(), and once only.
    void startWith(const QString &host, const QList<QHostAddress> &addresses, quint16 port, int patience);
    /// Ends all attempts; no signal follows.
    void stop();

Q_SIGNALS:
    /// The address that is tried now, with its port.
    void trying(const QString &where);
    /// The connected socket, which now belongs to the receiver.
    void won(QSslSocket *socket);
    /// Nobody answered; `unknown` when the host has no address at all. `text` is a sentence.
    void lost(bool unknown, const QString &text);

private:
    void prepare(const QString &host, quint16 port, int patience);
    void begin(const QList<QHostAddress> &addresses, const QString &problem);
    void tryNext();
    void attemptConnected(QSslSocket *socket);
    void attemptFailed(QSslSocket *socket, const QHostAddress &address);

    QString m_host;
    quint16 m_port = 0;
    QList<QHostAddress> m_waiting;
    QList<QSslSocket *> m_attempts;
    QStringList m_failures;
    QTimer m_patience;
    bool m_stopped = false;
};

/// A socket as every connection of ours uses it: no proxy, a bounded read buffer, small writes sent at once.
QSslSocket *makeSocket(QObject *parent);

} // namespace vandrel
