#include "platform/capture/PortalScreenSource.h"

#include <QCoreApplication>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QFile>
#include <QImageReader>
#include <QRandomGenerator>
#include <QUrl>

#include "platform/filesystem/NativeFile.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

QString service()
{
    return QStringLiteral("org.freedesktop.portal.Desktop");
}

QString requestInterface()
{
    return QStringLiteral("org.freedesktop.portal.Request");
}

// The answers that a request can have; any other number is that it ended in some other way.
enum class Response : uint { Success = 0, Cancelled = 1 };

// On its own thread. The file is the portal's gift and of no more use afterwards, whatever it holds.
QImage readAndRemove(const QString &path)
{
    const QByteArray native = QFile::encodeName(path);
    QImage image;
    QString problem;
    try {
        const auto file = openForReading(native, path);
        QImageReader reader(file.get(), "png");
        image = reader.read();
        problem = reader.errorString();
    } catch (const RuntimeError &failure) {
        problem = failure.text();
    }
    QFile::remove(path);
    if (image.isNull())
        throw RuntimeError(error::DeviceUnavailable,
                           QCoreApplication::translate(
                               "PortalScreenSource", "The desktop's picture of the screen cannot be read: %1")
                               .arg(problem));
    return std::move(image).convertToFormat(QImage::Format_RGB32);
}

} // namespace

PortalScreenSource::PortalScreenSource(const QDBusConnection &bus, int patience)
    : m_bus(bus), m_portal(service(), bus, QDBusServiceWatcher::WatchForUnregistration)
{
    m_patience.setSingleShot(true);
    m_patience.setInterval(patience);
    connect(&m_patience, &QTimer::timeout, this,
            [this] { end(tr("The desktop did not answer the question for a picture of the screen.")); });
    connect(&m_portal, &QDBusServiceWatcher::serviceUnregistered, this,
            [this] { end(tr("The desktop's portal ended before it gave a picture of the screen.")); });
}

PortalScreenSource::~PortalScreenSource()
{
    forget();
}

// The answer can come before the call returns, so that its place is listened at beforehand; the portal derives it from
// the caller's name and the token.
void PortalScreenSource::ask()
{
    if (!m_bus.isConnected()) {
        Q_EMIT refused(
            tr("There is no message bus, and without it a Wayland desktop gives nobody a picture of the "
               "screen. Start Vandrel from within the desktop."));
        return;
    }
    const QString token = QStringLiteral("vandrel") + QString::number(QRandomGenerator::global()->generate());
    QString sender = m_bus.baseService().mid(1);
    sender.replace(u'.', u'_');
    listenAt(QStringLiteral("/org/freedesktop/portal/desktop/request/%1/%2").arg(sender, token));
    QDBusMessage call = QDBusMessage::createMethodCall(
        service(), QStringLiteral("/org/freedesktop/portal/desktop"),
        QStringLiteral("org.freedesktop.portal.Screenshot"), QStringLiteral("Screenshot"));
    call << QString()
         << QVariantMap{{QStringLiteral("handle_token"), token}, {QStringLiteral("interactive"), false}};
    m_call = std::make_unique<QDBusPendingCallWatcher>(m_bus.asyncCall(call));
    connect(m_call.get(), &QDBusPendingCallWatcher::finished, this, &PortalScreenSource::take);
    m_patience.start();
}

void PortalScreenSource::listenAt(const QString &requestPath)
{
    m_request = requestPath;
    m_bus.connect(service(), m_request, requestInterface(), QStringLiteral("Response"), this,
                  SLOT(answer(uint, QVariantMap)));
}

// An old portal names the request as it likes.
void PortalScreenSource::take()
{
    const QDBusPendingReply<QDBusObjectPath> reply = *m_call;
    if (reply.isError()) {
        end(tr("This desktop has no portal that gives pictures of the screen: %1")
                .arg(reply.error().message()));
    } else if (const QString path = reply.value().path(); path != m_request) {
        m_bus.disconnect(service(), m_request, requestInterface(), QStringLiteral("Response"), this,
                         SLOT(answer(uint, QVariantMap)));
        listenAt(path);
    }
}

void PortalScreenSource::answer(uint response, const QVariantMap &results)
{
    if (m_request.isEmpty())
        return;
    const QUrl place(results.value(QStringLiteral("uri")).toString());
    if (response == static_cast<uint>(Response::Cancelled)) {
        end(tr("The desktop refused to give a picture of the screen."));
    } else if (response != static_cast<uint>(Response::Success) || !place.isLocalFile()) {
        end(tr("The desktop could not take a picture of the screen."));
    } else {
        forget();
        Q_EMIT given([path = place.toLocalFile()] { return readAndRemove(path); });
    }
}

void PortalScreenSource::end(const QString &reason)
{
    if (m_request.isEmpty())
        return;
    forget();
    Q_EMIT refused(reason);
}

// Closing a request that is over already does nothing. The call can still be under way when its request has been
// answered; it is nothing to the next one.
void PortalScreenSource::forget()
{
    m_patience.stop();
    if (m_call) {
        m_call->disconnect(this);
        m_call.release()->deleteLater();
    }
    if (m_request.isEmpty())
        return;
    m_bus.disconnect(service(), m_request, requestInterface(), QStringLiteral("Response"), this,
                     SLOT(answer(uint, QVariantMap)));
    m_bus.send(
        QDBusMessage::createMethodCall(service(), m_request, requestInterface(), QStringLiteral("Close")));
    m_request.clear();
}

} // namespace vandrel
