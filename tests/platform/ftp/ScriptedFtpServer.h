#pragma once

#include <functional>
#include <map>
#include <memory>

#include <QByteArrayList>
#include <QPointer>
#include <QTcpServer>
#include <QTcpSocket>

namespace vandrel::test {

/// A server on loopback that answers each command as it is told, well or badly. What is not told it answers like a
/// plain server that offers nothing. It keeps the commands it got, by connection.
class ScriptedFtpServer : public QObject
{
    Q_OBJECT

public:
    ScriptedFtpServer();

    /// "127.0.0.1:port".
    QString address() const;
    /// What is sent for a command, whole replies with their line ends; "" is silence.
    void answer(const QByteArray &command, const QByteArray &replies) { m_answers[command] = replies; }
    /// Runs when a command arrives, instead of an answer.
    void onCommand(const QByteArray &command, std::function<void()> action)
    {
        m_actions[command] = std::move(action);
    }
    void send(const QByteArray &octets);
    /// Ends the control connection.
    void hangUp();
    /// What a data connection is given when it is made; the connection is then ended, unless it is held.
    void serve(const QByteArray &octets, bool isHeld = false);
    /// Takes no more of what is uploaded than fits into the system's buffers.
    void stopReadingData() { m_readsData = false; }
    void sendData(const QByteArray &octets);
    void endData();
    /// What came over data connections.
    const QByteArray &received() const { return m_received; }

    const QByteArrayList &commands() const { return m_commands; }
    int connections() const { return m_connections; }
    quint16 dataPort() const { return m_data.serverPort(); }

    QByteArray greeting = "220 ready\r\n";

private:
    void accept();
    void acceptData();
    void read();
    void take(const QByteArray &line);

    QPointer<QTcpSocket> m_control;
    QPointer<QTcpSocket> m_dataSocket;
    QByteArray m_buffer;
    QByteArray m_served;
    bool m_isHeld = false;
    bool m_readsData = true;
    QByteArray m_received;
    QByteArrayList m_commands;
    int m_connections = 0;
    std::map<QByteArray, QByteArray> m_answers;
    std::map<QByteArray, std::function<void()>> m_actions;
    // Destroyed first, because their sockets are still heard while they end.
    QTcpServer m_server;
    QTcpServer m_data;
};

} // namespace vandrel::test
