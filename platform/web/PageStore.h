#pragma once

#include <memory>

#include <QObject>
#include <QString>

class QWebEnginePage;
class QWebEngineProfile;

namespace vandrel {

class NetworkEmulation;
class RequestGate;

/// What one browser's box keeps of the pages: a cache in a folder of its own, cookies in memory. All of it goes with the
/// box.
class PageStore : public QObject
{
    Q_OBJECT

public:
    /// Starts the engine where it does not run yet; raises what prepareEngine() raises.
    explicit PageStore(QObject *parent = nullptr);
    ~PageStore() override;

    QWebEngineProfile &profile() { return *m_profile; }

    /// From now on the pages of the profile come from the cache alone. Nothing takes it back. Until offlineReady() no
    /// page may be asked for.
    void goOffline(QWebEnginePage *page);
    bool isOffline() const { return m_offline; }
    bool isGoingOffline() const { return m_offline && !m_ready; }

Q_SIGNALS:
    void offlineReady();

private:
    void silenceTheProxy();

    QString m_folder;
    std::unique_ptr<RequestGate> m_gate;
    std::unique_ptr<QWebEngineProfile> m_profile;
    std::unique_ptr<NetworkEmulation> m_emulation;
    bool m_offline = false;
    bool m_ready = false;
};

} // namespace vandrel
