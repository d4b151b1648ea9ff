#include "platform/net/LineConnection.h"

#include "platform/net/ServerLine.h"
#include "platform/net/SocketLink.h"
#include "platform/net/TlsTrust.h"

namespace vandrel {

void LineConnection::EndLater::operator()(SocketLink *link) const
{
    link->end();
    link->deleteLater();
}

LineConnection::LineConnection(QObject *parent) : QObject(parent) { }

LineConnection::~LineConnection() = default;

void LineConnection::setLimits(const Limits &limits)
{
    m_limits = limits;
}

const LineConnection::Limits &LineConnection::limits() const
{
    return m_limits;
}

void LineConnection::setTlsConfiguration(const QSslConfiguration &configuration)
{
    m_tls = configuration;
}

QSslConfiguration LineConnection::tlsConfiguration() const
{
    if (isEncrypted())
        return m_link->socket()->sslConfiguration();
    return m_tls ? *m_tls : clientTlsConfiguration();
}

void LineConnection::setTlsHost(const QString &host)
{
    m_tlsHost = host;
}

LineConnection::Link LineConnection::makeLink(bool implicitTls)
{
    return Link(new SocketLink(*this, implicitTls));
}

void LineConnection::open(const QString &host, quint16 port, bool implicitTls)
{
    if (m_link)
        return;
    m_host = host;
    m_link = makeLink(implicitTls);
    m_link->open(port);
}

bool LineConnection::adopt(qintptr descriptor, const QString &host, bool implicitTls)
{
    if (m_link)
        return false;
    m_host = host;
    m_link = makeLink(implicitTls);
    if (m_link->adopt(descriptor))
        return true;
    m_link.reset();
    return false;
}

void LineConnection::startTls()
{
    if (m_link)
        m_link->startTls();
}

bool LineConnection::sendLine(QByteArrayView line)
{
    if (!m_link || breaksTheLine(line))
        return false;
    QByteArray octets = line.toByteArray();
    octets += "\r\n";
    if (!m_link->write(octets))
        return false;
    // The server may begin with its answer at once.
    m_link->flush();
    return true;
}

bool LineConnection::write(QByteArrayView octets)
{
    return m_link && m_link->write(octets);
}

qsizetype LineConnection::writeSome(const QByteArray &octets, qsizetype from)
{
    return m_link ? m_link->writeSome(octets, from) : 0;
}

qint64 LineConnection::unsent() const
{
    return m_link ? m_link->unsent() : 0;
}

void LineConnection::await(const QString &what, int milliseconds)
{
    if (m_link)
        m_link->await(what, milliseconds);
}

void LineConnection::stopAwaiting()
{
    if (m_link)
        m_link->stopAwaiting();
}

void LineConnection::setReading(Reading reading)
{
    if (m_link)
        m_link->setReading(reading);
}

void LineConnection::unread(qsizetype count)
{
    if (m_link)
        m_link->unread(count);
}

bool LineConnection::lineHadCarriageReturn() const
{
    return !m_link || m_link->lineHadCarriageReturn();
}

void LineConnection::setPaused(bool paused)
{
    if (m_link)
        m_link->setPaused(paused);
}

void LineConnection::close()
{
    if (m_link)
        m_link->close();
}

void LineConnection::finishSending()
{
    if (m_link)
        m_link->finishSending();
}

void LineConnection::abort()
{
    m_link.reset();
}

bool LineConnection::isOpen() const
{
    return m_link != nullptr;
}

bool LineConnection::isEncrypted() const
{
    return m_link && m_link->socket() && m_link->socket()->isEncrypted();
}

QString LineConnection::tlsVersion() const
{
    if (!isEncrypted())
        return {};
    return m_link->socket()->sessionProtocol() == QSsl::TlsV1_3 ? QStringLiteral("TLS 1.3")
                                                                : QStringLiteral("TLS 1.2");
}

QString LineConnection::host() const
{
    return m_host;
}

QHostAddress LineConnection::peerAddress() const
{
    return m_link && m_link->socket() ? m_link->socket()->peerAddress() : QHostAddress();
}

QHostAddress LineConnection::localAddress() const
{
    return m_link && m_link->socket() ? m_link->socket()->localAddress() : QHostAddress();
}

bool LineConnection::peerAnnouncedEnd() const
{
    return m_peerAnnouncedEnd;
}

void LineConnection::end(bool peerAnnouncedEnd)
{
    m_peerAnnouncedEnd = peerAnnouncedEnd;
    m_link.reset();
}

} // namespace vandrel
