#pragma once

#include <memory>

#include <QDBusConnection>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QTimer>
#include <QVariantMap>

#include "platform/capture/ScreenSource.h"

namespace vandrel {

/// The screenshot portal of a Wayland desktop (org.freedesktop.portal.Screenshot), which may ask the user for leave. It
/// leaves the picture in a file, which is read and then removed.
class PortalScreenSource final : public ScreenSource
{
    Q_OBJECT

public:
    /// Asks on that bus; the user's own unless a test says otherwise. `patience` bounds the wait for the user, in
    /// milliseconds.
    explicit PortalScreenSource(const QDBusConnection &bus = QDBusConnection::sessionBus(),
                                int patience = 5 * 60 * 1000);
    ~PortalScreenSource() override;

    void ask() override;

private Q_SLOTS:
    /// The request's signal, wherefore it has a slot of that signature.
    void answer(uint response, const QVariantMap &results);

private:
    void listenAt(const QString &requestPath);
    void take();
    void end(const QString &reason);
    void forget();

    QDBusConnection m_bus;
    QDBusServiceWatcher m_portal;
    QTimer m_patience;
    std::unique_ptr<QDBusPendingCallWatcher> m_call;
    /// The request's object while one is open, empty otherwise.
    QString m_request;
};

} // namespace vandrel
