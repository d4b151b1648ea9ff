#pragma once

#include <functional>

#include <QByteArray>
#include <QHostAddress>
#include <QObject>
#include <QSslConfiguration>

#include "platform/ftp/FtpRequest.h"
#include "platform/ftp/Reply.h"
#include "platform/net/LineConnection.h"

namespace vandrel {

/// How long a session waits for its server, in milliseconds.
struct FtpPatience {
    /// For a connection, lookup and handshake included.
    int connecting = 30'000;
    /// For the reply to a command.
    int reply = 60'000;
    /// For the next octet of a transfer, and for a server that connects back.
    int data = 60'000;
    /// For the server to come to rest after an abort.
    int rest = 5'000;
    /// Between two signs of life of a session that has nothing to do: servers end those that are silent for some minutes.
    int idle = 60'000;
};

/// The control connection of an FTP session: sends one command at a time and hands its replies to whoever sent it. It
/// ends with lost(), unless it is dropped.
class FtpLink : public QObject
{
    Q_OBJECT

public:
    /// Takes each reply to a command: any number of preliminary ones, then the final one.
    using OnReply = std::function<void(const FtpReply &reply)>;

    explicit FtpLink(const FtpPatience &patience, QObject *parent = nullptr);

    /// Connects; `onGreeting` takes the server's first reply.
    void open(const QString &host, quint16 port, bool implicitTls, OnReply onGreeting);
    /// Begins to encrypt; `onEncrypted` is called when that is done.
    void startTls(std::function<void()> onEncrypted);

    /// Sends a command; the one before must have its final reply. False, and nothing
    /// sent, when it holds a line end or a NUL.
    [[nodiscard]] bool send(const QByteArray &command, OnReply onReply);
    /// The same where only the final reply matters.
    [[nodiscard]] bool ask(const QByteArray &command, OnReply onFinalReply);
    /// Sends a command in the middle of another, whose replies go on to the same taker.
    [[nodiscard]] bool sendBetween(const QByteArray &command);
    /// Gives further replies of the running command to another taker.
    void redirect(OnReply onReply);
    bool isWaiting() const { return static_cast<bool>(m_onReply); }
    /// While a transfer runs its control connection may be silent for as long as it takes.
    void setPatient(bool isPatient);
    /// From now on the next reply may take its time, and no longer.
    void awaitReply();
    const FtpPatience &patience() const { return m_patience; }

    /// Sends QUIT and ends the connection in good order; nothing more is raised.
    void quit();
    /// Ends the connection at once; nothing more is raised.
    void drop();

    bool isOpen() const { return m_connection.isOpen(); }
    bool isEncrypted() const { return m_connection.isEncrypted(); }
    QSslConfiguration tlsConfiguration() const { return m_connection.tlsConfiguration(); }
    QString host() const { return m_connection.host(); }
    QHostAddress peerAddress() const { return m_connection.peerAddress(); }
    QHostAddress localAddress() const { return m_connection.localAddress(); }

Q_SIGNALS:
    /// The connection is gone and why: a failure, the server's farewell, or something that is no FTP.
    void lost(const vandrel::FtpOutcome &why);

private:
    void takeLine(const QByteArray &line);
    void takeReply(const FtpReply &reply);
    void lose(const FtpOutcome &why);
    void loseConnection(LineConnection::Failure failure, const QString &text);

    const FtpPatience m_patience;
    LineConnection m_connection;
    FtpReplyReader m_reader;
    OnReply m_onReply;
    std::function<void()> m_onEncrypted;
    QString m_awaited;
    bool m_isQuitting = false;
};

} // namespace vandrel
