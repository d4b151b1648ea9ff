#include "platform/web/EngineBrowser.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>

#include <QAction>
#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>
#include <QRegularExpression>
#include <QShortcut>
#include <QVBoxLayout>
#include <QWebEngineHistory>
#include <QWebEngineLoadingInfo>
#include <QWebEngineProfile>
#include <QWebEngineScript>
#include <QWebEngineView>

#include "controls/CommonDialog.h"
#include "controls/DriveView.h"
#include "platform/web/BrowserAddress.h"
#include "platform/web/BrowserPage.h"
#include "platform/web/BuiltInPages.h"
#include "platform/web/EngineStart.h"
#include "platform/web/FindBar.h"
#include "platform/web/PageDownloads.h"
#include "platform/web/PageStore.h"
#include "runtime/EventGate.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// How long a host has to answer in an encrypted protocol where the protocol was not typed, in milliseconds.
constexpr int guessPatience = 5000;
// The engine's progress before anything has come from the server.
constexpr int askingPercent = 10;
constexpr double zoomStep = 1.1;
constexpr double leastZoom = 0.25;
constexpr double mostZoom = 5.0;

QUrl blankPage()
{
    return QUrl(QStringLiteral("about:blank"));
}

// By the engine's numbers: connection closed, connection reset, less than was announced, no last chunk.
bool brokeOff(int code)
{
    constexpr std::array codes{-100, -101, -354, -355};
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

// What the status text says of a load's end. The engine's sentences are written for its pages, with their marks.
QString endOf(const QWebEngineLoadingInfo &loading)
{
    static const QRegularExpression marks(QStringLiteral("<[^>]*>"));
    if (loading.status() == QWebEngineLoadingInfo::LoadStoppedStatus)
        return EngineBrowser::tr("Stopped");
    if (loading.status() != QWebEngineLoadingInfo::LoadFailedStatus || loading.errorString().isEmpty())
        return EngineBrowser::tr("Done");
    if (loading.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
        return EngineBrowser::tr("The server answered with error %1.").arg(loading.errorCode());
    // Where the engine shows no page of its own, it has the error's name alone.
    if (loading.errorString().startsWith(QStringLiteral("net::")))
        return (brokeOff(loading.errorCode())
                    ? EngineBrowser::tr("The server broke off before the page was whole (%1).")
                    : EngineBrowser::tr("The page could not be loaded (%1)."))
            .arg(loading.errorString());
    return loading.errorString().remove(marks);
}

} // namespace

EngineBrowser::EngineBrowser(std::shared_ptr<DriveView> drives, DialogMaker makeDialog)
    : m_drives(std::move(drives)), m_store(std::make_unique<PageStore>()),
      m_page(std::make_unique<BrowserPage>(&m_store->profile())), m_view(new QWebEngineView(this)),
      m_findBar(new FindBar(m_page.get(), this)),
      m_downloads(new PageDownloads(m_drives, std::move(makeDialog), this))
{
    m_view->setPage(m_page.get());
    arrange();
    connectPage();
    addShortcuts();
    tellOfTheSandbox();
}

// The page before the profile that it belongs to, and the view before the page.
EngineBrowser::~EngineBrowser()
{
    m_page->disconnect(this);
    delete m_view;
    m_page.reset();
}

void EngineBrowser::arrange()
{
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(0);
    column->addWidget(m_view, 1);
    column->addWidget(m_findBar);
    column->addWidget(m_downloads);
    m_view->setObjectName(QStringLiteral("view"));
    setFocusProxy(m_view);
}

void EngineBrowser::connectPage()
{
    m_page->setLinkFollower([this](const QUrl &link) { return followOffline(link); });
    onEvent(m_page.get(), &QWebEnginePage::loadingChanged, this, &EngineBrowser::follow);
    onEvent(m_page.get(), &QWebEnginePage::loadProgress, this, [this](int percent) {
        if (percent > askingPercent)
            m_guessPatience.stop();
        if (m_loading)
            tellStatus(tr("Loading %1: %2 %").arg(m_opening, QString::number(percent)));
    });
    onEvent(m_page.get(), &QWebEnginePage::linkHovered, this,
            [this](const QString &url) { tellStatus(url.isEmpty() ? m_status : url); });
    onEvent(m_page.get(), &BrowserPage::refused, this,
            [this](const QString &sentence) { tellStatus(sentence); });
    onEvent(m_page.get(), &QWebEnginePage::renderProcessTerminated, this, [this] { explainLostPage(); });
    onEvent(m_page.get(), &QWebEnginePage::printRequested, this, &EngineBrowser::print);
    onEvent(m_store.get(), &PageStore::offlineReady, this, [this] {
        if (const auto action = std::exchange(m_waiting, {}))
            action();
    });
    m_guessPatience.setSingleShot(true);
    m_guessPatience.setInterval(guessPatience);
    onEvent(&m_guessPatience, &QTimer::timeout, this, [this] {
        if (const QUrl guessed = std::exchange(m_guessed, {}); !guessed.isEmpty())
            m_page->load(plainTwin(guessed));
    });
    onEvent(&m_store->profile(), &QWebEngineProfile::downloadRequested, this,
            [this](QWebEngineDownloadRequest *download) { m_downloads->take(download); });
}

void EngineBrowser::addShortcut(const QKeySequence &keys, void (EngineBrowser::*action)())
{
    auto *shortcut = new QShortcut(keys, this);
    shortcut->setContext(Qt::WindowShortcut);
    onEvent(shortcut, &QShortcut::activated, this, [this, action] {
        try {
            (this->*action)();
        } catch (const RuntimeError &failure) {
            tellStatus(failure.text());
        }
    });
}

void EngineBrowser::addShortcuts()
{
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_Plus), &EngineBrowser::zoomIn);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_Equal), &EngineBrowser::zoomIn);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_Minus), &EngineBrowser::zoomOut);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_0), &EngineBrowser::zoomToNormal);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_F), &EngineBrowser::openFindBar);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_P), &EngineBrowser::print);
    addShortcut(QKeySequence(Qt::CTRL | Qt::Key_R), &EngineBrowser::Refresh);
    addShortcut(QKeySequence(Qt::Key_F5), &EngineBrowser::Refresh);
    addShortcut(QKeySequence(Qt::ALT | Qt::Key_Left), &EngineBrowser::GoBack);
    addShortcut(QKeySequence(Qt::ALT | Qt::Key_Right), &EngineBrowser::GoForward);
}

void EngineBrowser::GoBack()
{
    if (!m_page->history()->canGoBack())
        throw RuntimeError(error::InvalidProcedureCall);
    whenReady([this] { m_page->history()->back(); });
}

void EngineBrowser::GoForward()
{
    if (!m_page->history()->canGoForward())
        throw RuntimeError(error::InvalidProcedureCall);
    whenReady([this] { m_page->history()->forward(); });
}

void EngineBrowser::Stop()
{
    m_guessed.clear();
    m_page->triggerAction(QWebEnginePage::Stop);
}

void EngineBrowser::GoHome()
{
    open(startPage());
}

void EngineBrowser::GoSearch()
{
    open(searchPage());
}

void EngineBrowser::Refresh()
{
    if (!m_lost.isEmpty())
        open(std::exchange(m_lost, {}));
    else if (!m_store->isOffline())
        m_page->triggerAction(QWebEnginePage::Reload);
}

void EngineBrowser::Navigate(const QString &typed)
{
    const BrowserAddress address = BrowserAddress::parse(typed, *m_drives);
    switch (address.kind) {
    case BrowserAddress::Kind::Blank:
        return open(blankPage());
    case BrowserAddress::Kind::Page:
        return address.schemeGuessed ? openGuess(address.url) : open(address.url);
    case BrowserAddress::Kind::Script:
        return m_page->runJavaScript(address.script);
    case BrowserAddress::Kind::Unusable:
        return showFailure(tr("This is not an address"),
                           tr("\"%1\" is neither a host, nor a full address, nor a file.").arg(typed), {});
    }
}

// A page that was shown before is gone back to, which shows what is kept of it however old that is; fetching it anew
// would ask its server first.
void EngineBrowser::open(const QUrl &url)
{
    m_guessed.clear();
    m_lost.clear();
    whenReady([this, url] {
        if (!openFromHistory(url))
            m_page->load(url);
    });
}

// On the way offline nothing may be asked for; the last command counts.
void EngineBrowser::whenReady(std::function<void()> action)
{
    if (m_store->isGoingOffline())
        m_waiting = std::move(action);
    else
        action();
}

bool EngineBrowser::openFromHistory(const QUrl &url)
{
    if (!m_store->isOffline())
        return false;
    const QList<QWebEngineHistoryItem> items = m_page->history()->items();
    const auto kept = std::find_if(items.rbegin(), items.rend(),
                                   [&url](const QWebEngineHistoryItem &item) { return item.url() == url; });
    if (kept == items.rend())
        return false;
    m_page->history()->goToItem(*kept);
    return true;
}

// A link is opened as a typed address is: it waits on the way offline, and shows what is kept of its page. Another place
// in the same page needs nothing. The engine tells the end of the link's own way only afterwards, and would take it for
// the end of whatever has begun by then.
bool EngineBrowser::followOffline(const QUrl &link)
{
    if (!m_store->isOffline() || link.matches(m_page->url(), QUrl::RemoveFragment))
        return false;
    m_link = link;
    return true;
}

// Offline nothing is asked, and what was fetched is known by the address that it was fetched from.
void EngineBrowser::openGuess(const QUrl &url)
{
    if (m_store->isOffline() && openFromHistory(plainTwin(url)))
        return;
    open(url);
    m_guessed = url;
    m_guessPatience.start();
}

void EngineBrowser::showFailure(const QString &heading, const QString &text, const QUrl &address)
{
    m_explains = true;
    m_page->setHtml(failurePage(heading, text), address);
}

void EngineBrowser::setOffline(bool offline)
{
    if (!offline)
        return;
    m_store->goOffline(m_page.get());
    tellStatus(tr("Offline: only pages that were fetched before are shown."));
}

QString EngineBrowser::LocationURL() const
{
    const QUrl url = m_page->url();
    return url.isEmpty() || url == blankPage() ? QStringLiteral("http:///") : url.toDisplayString();
}

QString EngineBrowser::LocationName() const
{
    const QUrl url = m_page->url();
    return url.isEmpty() || url == blankPage() ? QString() : m_page->title();
}

void EngineBrowser::follow(const QWebEngineLoadingInfo &loading)
{
    if (loading.status() == QWebEngineLoadingInfo::LoadStartedStatus)
        begin(loading.url());
    else if (const QUrl link = std::exchange(m_link, {}); !link.isEmpty())
        openAtRest(link);
    else if (!triesPlainTwin(loading) && !tellsOfOffline(loading))
        finish(loading);
}

// The page of a link that was not followed goes on telling of that way for a while; what it answers comes behind.
void EngineBrowser::openAtRest(const QUrl &link)
{
    m_page->runJavaScript(QString(), QWebEngineScript::ApplicationWorld,
                          [box = QPointer(this), link](const QVariant &) {
                              if (box)
                                  EventGate::raise(box, [box, link] { box->open(link); });
                          });
}

// A page that explains why another is not shown is no page that anybody opened.
void EngineBrowser::begin(const QUrl &url)
{
    if (!std::exchange(m_explains, false)) {
        m_opening = url.toDisplayString();
        tellStatus(tr("Opening page %1...").arg(m_opening));
    }
    if (std::exchange(m_loading, true))
        return;
    EventGate::raise(this, [this] { Q_EMIT DownloadBegin(); });
}

// A stopped load leaves the page that was there; every other end is a document to be seen.
void EngineBrowser::finish(const QWebEngineLoadingInfo &loading)
{
    if (!std::exchange(m_loading, false))
        return;
    const bool stopped = loading.status() == QWebEngineLoadingInfo::LoadStoppedStatus;
    m_status = endOf(loading);
    tellStatus(m_status);
    EventGate::raise(this, [this] { Q_EMIT DownloadComplete(); });
    if (!stopped)
        EventGate::raise(this, [this] { Q_EMIT DocumentComplete(); });
}

// A host that does not speak an encrypted protocol is asked plainly, where nobody said which one it speaks. A bad
// certificate is no reason: whoever forged it would get the plain request.
bool EngineBrowser::triesPlainTwin(const QWebEngineLoadingInfo &loading)
{
    m_guessPatience.stop();
    const QUrl guessed = std::exchange(m_guessed, {});
    if (guessed.isEmpty() || loading.status() != QWebEngineLoadingInfo::LoadFailedStatus
        || loading.errorDomain() != QWebEngineLoadingInfo::ConnectionErrorDomain)
        return false;
    m_page->load(plainTwin(guessed));
    return true;
}

// The engine's own page would speak of the network, which is not at fault.
bool EngineBrowser::tellsOfOffline(const QWebEngineLoadingInfo &loading)
{
    if (!m_store->isOffline() || loading.status() != QWebEngineLoadingInfo::LoadFailedStatus
        || loading.errorDomain() == QWebEngineLoadingInfo::HttpStatusCodeDomain)
        return false;
    showFailure(tr("Offline"), tr("The browser is offline, and this page was not fetched before."),
                loading.url());
    return true;
}

void EngineBrowser::tellStatus(const QString &text)
{
    if (text == m_shownStatus)
        return;
    m_shownStatus = text;
    EventGate::raise(this, [this, text] { Q_EMIT StatusTextChange(text); });
}

void EngineBrowser::tellOfTheSandbox()
{
    if (pagesAreSandboxed())
        return;
    m_status = tr("Pages run without their sandbox, since the program runs as root.");
    tellStatus(m_status);
}

void EngineBrowser::explainLostPage()
{
    const QUrl url = m_page->url();
    showFailure(tr("The page has crashed"), tr("\"Refresh\" loads it again."), url);
    m_lost = url;
}

// The printer outlives this call: the engine prints meanwhile.
void EngineBrowser::print()
{
    auto printer = std::make_shared<QPrinter>();
    QPrintDialog dialog(printer.get(), window());
    if (dialog.exec() != QDialog::Accepted)
        return;
    connect(
        m_view, &QWebEngineView::printFinished, this,
        [this, printer](bool done) {
            tellStatus(done ? tr("Printed") : tr("The page could not be printed."));
        },
        Qt::SingleShotConnection);
    m_view->print(printer.get());
}

void EngineBrowser::openFindBar()
{
    m_findBar->open();
}

void EngineBrowser::zoomIn()
{
    m_page->setZoomFactor(std::min(m_page->zoomFactor() * zoomStep, mostZoom));
}

void EngineBrowser::zoomOut()
{
    m_page->setZoomFactor(std::max(m_page->zoomFactor() / zoomStep, leastZoom));
}

void EngineBrowser::zoomToNormal()
{
    m_page->setZoomFactor(1.0);
}

} // namespace vandrel
