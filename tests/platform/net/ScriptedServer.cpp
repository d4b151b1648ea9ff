#include "tests/platform/net/ScriptedServer.h"

#include <algorithm>
#include <utility>

#include <QSslConfiguration>

#include "tests/platform/net/SocketReset.h"

namespace vandrel {

namespace {

constexpr qint64 floodAhead = 1024 * 1024;

} // namespace

ServerStep say(const QByteArray &octets)
{
    return {ServerStep::Kind::Say, octets, {}};
}

ServerStep sayInOctets(const QByteArray &octets)
{
    return {ServerStep::Kind::SayInOctets, octets, {}};
}

ServerStep sayForEver(const QByteArray &octets)
{
    return {ServerStep::Kind::SayForEver, octets, {}};
}

ServerStep hear(const QByteArray &prefix)
{
    return {ServerStep::Kind::Hear, prefix, {}};
}

ServerStep hearUntil(const QByteArray &line)
{
    return {ServerStep::Kind::HearUntil, line, {}};
}

ServerStep encrypt()
{
    return {ServerStep::Kind::Encrypt, {}, {}};
}

ServerStep hangUp()
{
    return {ServerStep::Kind::Close, {}, {}};
}

ServerStep cutOff()
{
    return {ServerStep::Kind::CutOff, {}, {}};
}

ServerStep resetConnection()
{
    return {ServerStep::Kind::Reset, {}, {}};
}

ServerStep act(std::function<void()> action)
{
    return {ServerStep::Kind::Do, {}, std::move(action)};
}

quint16 portWithoutServer()
{
    QTcpServer closed;
    closed.listen(QHostAddress::LocalHost);
    return closed.serverPort();
}

ScriptedServer::ScriptedServer(Script script, const QHostAddress &address, quint16 port)
    : m_script(std::move(script))
{
    listen(address, port);
}

bool ScriptedServer::hasClient() const
{
    const auto sockets = findChildren<QSslSocket *>();
    return std::any_of(sockets.begin(), sockets.end(), [](const QSslSocket *socket) {
        return socket->state() == QAbstractSocket::ConnectedState;
    });
}

void ScriptedServer::incomingConnection(qintptr descriptor)
{
    ++m_connections;
    const auto client = std::make_shared<Client>();
    client->socket = new QSslSocket(this);
    client->steps.assign(m_script.begin(), m_script.end());
    client->socket->setSocketDescriptor(descriptor);
    // Queued, so that a socket is never ended inside one of its own functions.
    connect(
        client->socket, &QSslSocket::readyRead, this,
        [this, client] {
            client->buffer += client->socket->readAll();
            go(client);
        },
        Qt::QueuedConnection);
    connect(
        client->socket, &QSslSocket::encrypted, this,
        [this, client] {
            client->encrypting = false;
            go(client);
        },
        Qt::QueuedConnection);
    connect(
        client->socket, &QSslSocket::bytesWritten, this, [this, client] { go(client); },
        Qt::QueuedConnection);
    go(client);
}

void ScriptedServer::go(const std::shared_ptr<Client> &client)
{
    while (!client->steps.empty() && client->socket->state() == QAbstractSocket::ConnectedState) {
        if (client->encrypting || !perform(client, client->steps.front()))
            return;
        client->steps.pop_front();
    }
    m_done = m_done || client->steps.empty();
}

bool ScriptedServer::perform(const std::shared_ptr<Client> &client, ServerStep &step)
{
    QSslSocket *socket = client->socket;
    switch (step.kind) {
    case ServerStep::Kind::Say:
        socket->write(step.octets);
        return true;
    case ServerStep::Kind::SayInOctets:
        if (!step.octets.isEmpty() && socket->bytesToWrite() == 0) {
            socket->write(step.octets.left(1));
            step.octets.remove(0, 1);
        }
        return step.octets.isEmpty() && socket->bytesToWrite() == 0;
    case ServerStep::Kind::SayForEver:
        while (socket->bytesToWrite() + socket->encryptedBytesToWrite() < floodAhead)
            socket->write(step.octets);
        return false;
    case ServerStep::Kind::Hear:
        return hearLine(*client, step.octets);
    case ServerStep::Kind::HearUntil:
        return hearLinesUntil(*client, step.octets);
    case ServerStep::Kind::Encrypt:
        beginEncryption(*client);
        return true;
    case ServerStep::Kind::Close:
        socket->disconnectFromHost();
        return true;
    case ServerStep::Kind::CutOff:
        if (socket->bytesToWrite() + socket->encryptedBytesToWrite() > 0)
            return false;
        socket->abort();
        return true;
    case ServerStep::Kind::Reset:
        if (socket->bytesToWrite() + socket->encryptedBytesToWrite() > 0)
            return false;
        resetWhenClosed(socket->socketDescriptor());
        socket->abort();
        return true;
    case ServerStep::Kind::Do:
        step.action();
        return true;
    }
    return true;
}

std::optional<QByteArray> ScriptedServer::nextLine(Client &client)
{
    const qsizetype end = client.buffer.indexOf('\n', client.position);
    if (end < 0) {
        client.buffer.remove(0, std::exchange(client.position, 0));
        return {};
    }
    const QByteArray line = client.buffer.mid(client.position, end - client.position).trimmed();
    client.position = end + 1;
    m_heard += line;
    return line;
}

bool ScriptedServer::hearLine(Client &client, const QByteArray &prefix)
{
    const auto line = nextLine(client);
    if (line && !line->startsWith(prefix)) {
        m_mismatch = m_mismatch.isEmpty() ? *line : m_mismatch;
        client.socket->abort();
    }
    return line.has_value();
}

bool ScriptedServer::hearLinesUntil(Client &client, const QByteArray &last)
{
    auto line = nextLine(client);
    while (line && *line != last)
        line = nextLine(client);
    return line.has_value();
}

void ScriptedServer::beginEncryption(Client &client)
{
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(m_identity.certificate);
    configuration.setPrivateKey(m_identity.key);
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    client.socket->setSslConfiguration(configuration);
    client.encrypting = true;
    client.socket->startServerEncryption();
}

} // namespace vandrel
