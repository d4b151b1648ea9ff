#include "platform/ftp/FtpData.h"

#include <utility>

#include <QNetworkProxy>
#include <QTcpSocket>

#include "platform/ftp/Reply.h"

namespace vandrel {

namespace {

/// Hands every connection on by its descriptor.
class Listener final : public QTcpServer
{
public:
    explicit Listener(std::function<void(qintptr)> onConnection) : m_onConnection(std::move(onConnection)) { }

protected:
    void incomingConnection(qintptr descriptor) override { m_onConnection(descriptor); }

private:
    std::function<void(qintptr)> m_onConnection;
};

// The command that tells the server where to connect to (RFC 959, RFC 2428).
QByteArray activeCommand(const QHostAddress &address, quint16 port)
{
    constexpr int octet = 256;
    if (address.protocol() == QAbstractSocket::IPv6Protocol)
        return "EPRT |2|" + address.toString().section(u'%', 0, 0).toLatin1() + '|' + QByteArray::number(port)
            + '|';
    QByteArray numbers = address.toString().toLatin1();
    numbers.replace('.', ',');
    return "PORT " + numbers + ',' + QByteArray::number(port / octet) + ','
        + QByteArray::number(port % octet);
}

} // namespace

FtpData::FtpData(FtpLink &link, FtpDataRules &rules, QObject *parent)
    : QObject(parent), m_link(link), m_rules(rules), m_connection(this)
{
    m_connection.setTlsConfiguration(link.tlsConfiguration());
    m_connection.setTlsHost(link.host());
    LineConnection::Limits limits;
    limits.connecting = link.patience().connecting;
    m_connection.setLimits(limits);
    m_connectingBack.setSingleShot(true);
    m_connectingBack.setInterval(link.patience().data);
    connect(&m_connectingBack, &QTimer::timeout, this, [this] {
        Q_EMIT failed(ftpFailure(
            FtpProblem::DataConnection,
            tr("The server was to connect back, because it offers nothing else, and has not done so. A "
               "firewall may be in its way.")));
    });
    connect(&m_connection, &LineConnection::connected, this, &FtpData::connectedToPeer);
    connect(&m_connection, &LineConnection::encrypted, this, &FtpData::open);
    connect(&m_connection, &LineConnection::blockReceived, this, &FtpData::received);
    connect(&m_connection, &LineConnection::sent, this, &FtpData::sent);
    connect(&m_connection, &LineConnection::closed, this, [this] {
        Q_EMIT ended(!m_rules.isProtected || m_isFinishing || m_connection.peerAnnouncedEnd());
    });
    connect(&m_connection, &LineConnection::failed, this,
            [this](LineConnection::Failure, const QString &text) {
                Q_EMIT failed(
                    ftpFailure(FtpProblem::DataConnection, tr("The data connection failed. %1").arg(text)));
            });
}

FtpData::~FtpData() = default;

void FtpData::prepare()
{
    const bool isIPv4 = m_link.peerAddress().protocol() == QAbstractSocket::IPv4Protocol;
    if (!m_rules.withoutExtended && !m_isExtendedRefused)
        askPort({"EPSV", extendedPassivePort, m_isExtendedRefused, m_rules.withoutExtended});
    else if (!m_rules.withoutPassive && !m_isPassiveRefused && isIPv4)
        askPort({"PASV", passivePort, m_isPassiveRefused, m_rules.withoutPassive});
    else
        listen();
}

void FtpData::askPort(const Way &way)
{
    (void)m_link.ask(way.command, [this, way](const FtpReply &reply) {
        if (!reply.isCompletion()) {
            // A server that cannot just now, for want of a free port for instance, is asked again another time.
            way.isRefusedNow = true;
            way.isRefusedForGood = !reply.isTransientFailure();
            prepare();
            return;
        }
        if (const auto port = way.portOf(reply))
            dial(*port);
        else
            Q_EMIT failed(ftpFailure(FtpProblem::DataConnection,
                                     tr("The server named no port for the data: %1").arg(reply.text())));
    });
}

void FtpData::dial(quint16 port)
{
    m_connection.open(m_link.peerAddress().toString(), port, false);
}

void FtpData::listen()
{
    auto listener = std::make_unique<Listener>([this](qintptr descriptor) {
        // One connection at a time is looked at; another one meanwhile is nobody's.
        if (m_isConnected || !m_connection.adopt(descriptor, m_link.host(), false)) {
            QTcpSocket refused;
            refused.setSocketDescriptor(descriptor);
        }
    });
    listener->setProxy(QNetworkProxy::NoProxy);
    if (!listener->listen(m_link.localAddress())) {
        Q_EMIT failed(ftpFailure(FtpProblem::DataConnection,
                                 tr("The server can only connect back, and this machine cannot listen: %1.")
                                     .arg(listener->errorString())));
        return;
    }
    const QByteArray command = activeCommand(m_link.localAddress(), listener->serverPort());
    m_listener = std::move(listener);
    (void)m_link.ask(command, [this](const FtpReply &reply) {
        if (reply.isCompletion())
            Q_EMIT ready();
        else
            Q_EMIT failed(ftpFailure(reply.number, reply.text()));
    });
}

void FtpData::connectedToPeer()
{
    // Anybody may connect to an open port; the data is the server's and nobody else's.
    if (m_listener && m_connection.peerAddress() != m_link.peerAddress()) {
        m_connection.abort();
        return;
    }
    m_isConnected = true;
    m_connection.setReading(LineConnection::Reading::Blocks);
    if (m_listener) {
        m_listener->close();
        begin();
    } else {
        Q_EMIT ready();
    }
}

void FtpData::begin()
{
    // A server that connects back may not have done so yet.
    if (!m_isConnected) {
        m_connectingBack.start();
        return;
    }
    m_connectingBack.stop();
    if (m_rules.isProtected)
        m_connection.startTls();
    else
        open();
}

void FtpData::open()
{
    m_isOpen = true;
    m_connection.await(tr("data"), m_link.patience().data);
    Q_EMIT opened();
}

qsizetype FtpData::write(const QByteArray &octets, qsizetype from)
{
    return m_isOpen ? m_connection.writeSome(octets, from) : 0;
}

void FtpData::finish()
{
    m_isFinishing = true;
    m_connection.finishSending();
}

void FtpData::drop()
{
    m_connectingBack.stop();
    if (m_listener)
        m_listener->close();
    m_connection.abort();
    m_isConnected = false;
    m_isOpen = false;
}

} // namespace vandrel
