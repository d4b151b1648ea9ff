#include "platform/web/PageStore.h"

#include <QNetworkProxy>
#include <QTcpServer>
#include <QUuid>
#include <QWebEngineProfile>
#include <QWebEngineSettings>
#include <QWebEngineUrlRequestInfo>
#include <QWebEngineUrlRequestInterceptor>

#include "platform/web/BuiltInPages.h"
#include "platform/web/EngineStart.h"
#include "platform/web/NetworkEmulation.h"
#include "platform/web/PageFolders.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr int cacheSize = 256 * 1024 * 1024;

bool reachesTheNetwork(const QUrl &url)
{
    const QString scheme = url.scheme();
    return scheme.startsWith(QStringLiteral("http")) || scheme.startsWith(QStringLiteral("ws"));
}

// Hosts that the engine never asks a proxy for.
bool bypassesProxies(const QString &host)
{
    const QHostAddress address(host);
    return host == QStringLiteral("localhost") || host.endsWith(QStringLiteral(".localhost"))
        || address.isLoopback() || address.isLinkLocal();
}

} // namespace

/// Stands before every request of a profile. Offline it lets none through that neither the proxy nor the engine's own
/// tools would stop.
class RequestGate : public QWebEngineUrlRequestInterceptor
{
public:
    enum class Way { Open, Closed, ClosedToBypasses, ClosedToForeignBypasses };

    void set(Way way) { m_way = way; }

    void interceptRequest(QWebEngineUrlRequestInfo &request) override
    {
        const QUrl url = request.requestUrl();
        if (m_way == Way::Open || !reachesTheNetwork(url))
            return;
        if (m_way == Way::Closed)
            request.block(true);
        if (!bypassesProxies(url.host()))
            return;
        // The engine's tools reach the page itself, and not what frames of other hosts ask for.
        const bool foreign = request.resourceType() != QWebEngineUrlRequestInfo::ResourceTypeMainFrame
            && request.firstPartyUrl().host() != url.host();
        if (m_way == Way::ClosedToBypasses || foreign)
            request.block(true);
    }

private:
    Way m_way = Way::Open;
};

PageStore::PageStore(QObject *parent) : QObject(parent), m_gate(std::make_unique<RequestGate>())
{
    prepareEngine();
    m_folder = newPageFolder();
    // A name of its own keeps it apart from the profiles of other windows; a nameless one would have no cache on disk.
    m_profile = std::make_unique<QWebEngineProfile>(QUuid::createUuid().toString(QUuid::WithoutBraces));
    engineHasStarted();
    m_profile->setPersistentStoragePath(m_folder + QStringLiteral("/store"));
    m_profile->setCachePath(m_folder + QStringLiteral("/cache"));
    m_profile->setHttpCacheType(QWebEngineProfile::DiskHttpCache);
    m_profile->setHttpCacheMaximumSize(cacheSize);
    m_profile->setPersistentCookiesPolicy(QWebEngineProfile::NoPersistentCookies);
    m_profile->setUrlRequestInterceptor(m_gate.get());
    m_profile->installUrlSchemeHandler(builtInScheme().toLatin1(), new BuiltInPages(m_profile.get()));
    QWebEngineSettings *settings = m_profile->settings();
    settings->setAttribute(QWebEngineSettings::PluginsEnabled, true);
    settings->setAttribute(QWebEngineSettings::PdfViewerEnabled, true);
    settings->setAttribute(QWebEngineSettings::JavascriptCanOpenWindows, false);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessFileUrls, true);
    settings->setAttribute(QWebEngineSettings::LocalContentCanAccessRemoteUrls, false);
    settings->setAttribute(QWebEngineSettings::DnsPrefetchEnabled, false);
    settings->setAttribute(QWebEngineSettings::FullScreenSupportEnabled, false);
    settings->setUnknownUrlSchemePolicy(QWebEngineSettings::DisallowUnknownUrlSchemes);
}

PageStore::~PageStore()
{
    if (m_offline)
        QNetworkProxy::setApplicationProxy(QNetworkProxy::NoProxy);
    m_emulation.reset();
    m_profile.reset();
    removePageFolder(m_folder);
}

// Every host but this computer's own is cut off by the proxy, and those by the engine's tools: neither reaches all. The
// tools come first: their page would be lost when the connections are made anew.
void PageStore::goOffline(QWebEnginePage *page)
{
    if (m_offline)
        return;
    m_offline = true;
    m_gate->set(RequestGate::Way::Closed);
    m_emulation = std::make_unique<NetworkEmulation>(page);
    onEvent(m_emulation.get(), &NetworkEmulation::finished, this, [this](bool cut) {
        silenceTheProxy();
        m_gate->set(cut ? RequestGate::Way::ClosedToForeignBypasses : RequestGate::Way::ClosedToBypasses);
        m_ready = true;
        Q_EMIT offlineReady();
    });
    m_emulation->cut();
}

// The engine reads the program's proxy and, with another size of its cache, makes its connections anew: nothing that was
// open goes on. The proxy is a port of this computer that is taken and answers nothing. The suite's other tools use no
// proxy of the program.
void PageStore::silenceTheProxy()
{
    auto *silent = new QTcpServer(this);
    silent->setProxy(QNetworkProxy::NoProxy);
    silent->listen(QHostAddress::LocalHost);
    silent->setMaxPendingConnections(1);
    silent->pauseAccepting();
    QNetworkProxy::setApplicationProxy(
        QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), silent->serverPort()));
    m_profile->setHttpCacheMaximumSize(cacheSize + 1);
}

} // namespace vandrel
