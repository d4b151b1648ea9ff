#include "tests/platform/net/ServerProcess.h"

#include <QProcessEnvironment>
#include <QStandardPaths>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

namespace vandrel {

namespace {

constexpr int longestStart = 60'000;
constexpr int longestEnd = 30'000;

} // namespace

ServerProcess::ServerProcess()
{
    m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
}

ServerProcess::~ServerProcess()
{
    if (endWithin(1'000))
        return;
    m_process.terminate();
    if (m_process.waitForFinished(longestEnd))
        return;
    m_process.kill();
    m_process.waitForFinished(longestEnd);
}

void ServerProcess::setVariable(const QString &name, const QString &value)
{
    QProcessEnvironment environment = m_process.processEnvironment().isEmpty()
        ? QProcessEnvironment::systemEnvironment()
        : m_process.processEnvironment();
    environment.insert(name, value);
    m_process.setProcessEnvironment(environment);
}

QStringList ServerProcess::startAndHear(const QString &program, const QStringList &arguments)
{
    m_process.start(program, arguments);
    while (!m_process.canReadLine()) {
        if (!m_process.waitForReadyRead(longestStart))
            return {};
    }
    return QString::fromLatin1(m_process.readLine().trimmed()).split(u' ');
}

bool ServerProcess::startAndKnock(const QString &program,
                                  const QStringList &arguments,
                                  const QHostAddress &address,
                                  quint16 port)
{
    m_process.start(program, arguments);
    const auto answersOrEnds = [&] {
        QTcpSocket knock;
        knock.connectToHost(address, port);
        return knock.waitForConnected(1'000) || m_process.state() == QProcess::NotRunning;
    };
    return m_process.waitForStarted() && QTest::qWaitFor(answersOrEnds, longestStart)
        && m_process.state() != QProcess::NotRunning;
}

bool ServerProcess::endWithin(int milliseconds)
{
    m_process.closeWriteChannel();
    return m_process.state() == QProcess::NotRunning || m_process.waitForFinished(milliseconds);
}

bool ServerProcess::end()
{
    return endWithin(longestEnd);
}

QByteArray ServerProcess::said()
{
    m_process.waitForReadyRead(0);
    return m_process.readAllStandardOutput();
}

quint16 ServerProcess::freePort(const QHostAddress &address)
{
    QTcpServer server;
    return server.listen(address) ? server.serverPort() : quint16(0);
}

QString ServerProcess::installed(const QString &program)
{
    const QString path = QStandardPaths::findExecutable(program);
    return path.isEmpty()
        ? QStandardPaths::findExecutable(program, {QStringLiteral("/usr/sbin"), QStringLiteral("/sbin")})
        : path;
}

} // namespace vandrel
