#include "tests/platform/web/PageServer.h"

#include <QNetworkProxy>
#include <QTcpSocket>

namespace vandrel::test {

PageServer::PageServer()
{
    m_server.setProxy(QNetworkProxy::NoProxy);
    m_server.listen(QHostAddress::LocalHost);
    m_port = m_server.serverPort();
    connect(&m_server, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket *client = m_server.nextPendingConnection())
            serve(client);
    });
}

QString PageServer::address(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1%2").arg(port()).arg(path);
}

void PageServer::page(const QString &path, const QByteArray &html, const QByteArray &headers)
{
    answer(path,
           "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\n" + headers + "Content-Length: "
               + QByteArray::number(html.size()) + "\r\nConnection: close\r\n\r\n" + html);
}

void PageServer::answer(const QString &path, const QByteArray &octets)
{
    m_answers[path] = octets;
}

void PageServer::answerInPart(const QString &path, const QByteArray &octets)
{
    answer(path, octets);
    m_partAnswers.append(path);
}

void PageServer::setAway(bool away)
{
    if (!away) {
        m_server.listen(QHostAddress::LocalHost, m_port);
        return;
    }
    m_server.close();
    const auto clients = m_server.findChildren<QTcpSocket *>();
    for (QTcpSocket *client : clients)
        client->abort();
}

void PageServer::serve(QTcpSocket *client)
{
    connect(client, &QTcpSocket::disconnected, client, &QObject::deleteLater);
    connect(client, &QTcpSocket::readyRead, this, [this, client, request = QByteArray()]() mutable {
        request += client->readAll();
        // A client that wants to speak an encrypted protocol says so with this octet.
        if (request.startsWith('\x16'))
            client->abort();
        else if (request.contains("\r\n\r\n"))
            reply(client, std::exchange(request, {}));
    });
}

void PageServer::reply(QTcpSocket *client, const QByteArray &request)
{
    const QByteArray line = request.left(request.indexOf('\r'));
    const QString path = QString::fromLatin1(line.split(' ').value(1));
    if (path != QStringLiteral("/favicon.ico")) {
        m_requests.append(QString::fromLatin1(line));
        m_lastRequest = request;
    }
    const auto found = m_answers.find(path);
    const QByteArray octets = found != m_answers.end()
        ? found->second
        : "HTTP/1.1 404 Not Found\r\nContent-Length: 9\r\nConnection: close\r\n\r\nNot found";
    if (octets.isEmpty()) {
        ++m_unanswered;
        return;
    }
    client->write(octets);
    if (!m_partAnswers.contains(path))
        client->disconnectFromHost();
}

} // namespace vandrel::test
