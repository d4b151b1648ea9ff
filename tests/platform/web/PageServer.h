#pragma once

#include <functional>
#include <map>

#include <QByteArray>
#include <QStringList>
#include <QTcpServer>

namespace vandrel::test {

/// A web server for one test, on a free port of this computer. It answers each path with what the test has put there,
/// and notes what was asked for.
class PageServer : public QObject
{
    Q_OBJECT

public:
    PageServer();

    /// "http://127.0.0.1:<port><path>".
    QString address(const QString &path) const;
    quint16 port() const { return m_port; }

    /// Answers `path` with a page.
    void page(const QString &path, const QByteArray &html, const QByteArray &headers = {});
    /// Answers `path` with these octets, the status line first; an empty answer is never given.
    void answer(const QString &path, const QByteArray &octets);
    /// Answers `path` with these octets and says no more, as a server does that has stopped in the middle.
    void answerInPart(const QString &path, const QByteArray &octets);

    /// Breaks off every connection and refuses further ones, as a network does that goes away, or answers again.
    void setAway(bool away);

    /// The request lines that came, in order ("GET /a HTTP/1.1"); what engines ask for by themselves left out.
    const QStringList &requests() const { return m_requests; }
    /// The last request, with its headers.
    const QByteArray &lastRequest() const { return m_lastRequest; }
    /// The paths asked for whose answer is empty.
    int unanswered() const { return m_unanswered; }

private:
    void serve(QTcpSocket *client);
    void reply(QTcpSocket *client, const QByteArray &request);

    QTcpServer m_server;
    quint16 m_port = 0;
    std::map<QString, QByteArray> m_answers;
    QStringList m_partAnswers;
    QStringList m_requests;
    QByteArray m_lastRequest;
    int m_unanswered = 0;
};

} // namespace vandrel::test
