#include "tests/platform/ftp/ScriptedFtpServer.h"

namespace vandrel::test {

ScriptedFtpServer::ScriptedFtpServer()
{
    m_server.listen(QHostAddress::LocalHost);
    m_data.listen(QHostAddress::LocalHost);
    connect(&m_server, &QTcpServer::newConnection, this, &ScriptedFtpServer::accept);
    connect(&m_data, &QTcpServer::newConnection, this, &ScriptedFtpServer::acceptData);
    answer("USER", "331 password\r\n");
    answer("PASS", "230 in\r\n");
    answer("TYPE", "200 ok\r\n");
    answer("EPSV", "229 ok (|||" + QByteArray::number(m_data.serverPort()) + "|)\r\n");
    answer("PWD", "257 \"/home\" is it\r\n");
    answer("LIST", "150 here\r\n226 done\r\n");
    answer("RETR", "150 here\r\n226 done\r\n");
    answer("STOR", "150 go on\r\n");
    answer("QUIT", "221 bye\r\n");
    answer("NOOP", "200 ok\r\n");
}

QString ScriptedFtpServer::address() const
{
    return QStringLiteral("127.0.0.1:%1").arg(m_server.serverPort());
}

void ScriptedFtpServer::send(const QByteArray &octets)
{
    if (m_control)
        m_control->write(octets);
}

void ScriptedFtpServer::hangUp()
{
    if (m_control)
        m_control->disconnectFromHost();
}

void ScriptedFtpServer::serve(const QByteArray &octets, bool isHeld)
{
    m_served = octets;
    m_isHeld = isHeld;
}

void ScriptedFtpServer::sendData(const QByteArray &octets)
{
    if (m_dataSocket)
        m_dataSocket->write(octets);
}

void ScriptedFtpServer::endData()
{
    if (m_dataSocket)
        m_dataSocket->disconnectFromHost();
}

void ScriptedFtpServer::accept()
{
    ++m_connections;
    m_buffer.clear();
    m_control = m_server.nextPendingConnection();
    connect(m_control, &QTcpSocket::readyRead, this, &ScriptedFtpServer::read);
    send(greeting);
}

void ScriptedFtpServer::acceptData()
{
    m_dataSocket = m_data.nextPendingConnection();
    if (m_readsData)
        connect(m_dataSocket, &QTcpSocket::readyRead, this,
                [this] { m_received += m_dataSocket->readAll(); });
    else
        m_dataSocket->setReadBufferSize(1);
    // An upload is complete when its connection has ended.
    connect(m_dataSocket, &QTcpSocket::disconnected, this, [this] {
        if (!m_commands.isEmpty() && m_commands.last().startsWith("STOR"))
            send("226 stored\r\n");
    });
    if (m_served.isNull())
        return;
    m_dataSocket->write(m_served);
    if (!m_isHeld)
        m_dataSocket->disconnectFromHost();
}

void ScriptedFtpServer::read()
{
    m_buffer += m_control->readAll();
    for (qsizetype end = m_buffer.indexOf("\r\n"); end >= 0; end = m_buffer.indexOf("\r\n")) {
        const QByteArray line = m_buffer.left(end);
        m_buffer.remove(0, end + 2);
        take(line);
    }
}

void ScriptedFtpServer::take(const QByteArray &line)
{
    m_commands.append(line);
    const QByteArray verb = line.left(line.indexOf(' ') < 0 ? line.size() : line.indexOf(' '));
    const auto action = m_actions.find(verb);
    if (action != m_actions.end()) {
        action->second();
        return;
    }
    const auto found = m_answers.find(verb);
    send(found == m_answers.end() ? QByteArray("502 not here\r\n") : found->second);
}

} // namespace vandrel::test
