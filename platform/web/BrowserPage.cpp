#include "platform/web/BrowserPage.h"

#include <QAuthenticator>
#include <QPointer>
#include <QWebEngineNewWindowRequest>
#include <QWebEngineView>

#include "platform/web/BrowserAddress.h"
#include "platform/web/LoginDialog.h"
#include "runtime/Events.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

// A page can say a lot in a box.
constexpr qsizetype longestSaying = 2000;

QString siteOf(const QUrl &url)
{
    return url.host().isEmpty() ? url.toDisplayString() : url.host();
}

QString saying(const QString &text)
{
    return text.size() > longestSaying ? text.left(longestSaying) + QChar(0x2026) : text;
}

QString nameOf(QWebEnginePage::Feature feature)
{
    switch (feature) {
    case QWebEnginePage::Notifications:
        return BrowserPage::tr("leave to show notifications");
    case QWebEnginePage::Geolocation:
        return BrowserPage::tr("your place");
    case QWebEnginePage::MediaAudioCapture:
        return BrowserPage::tr("the microphone");
    case QWebEnginePage::MediaVideoCapture:
        return BrowserPage::tr("the camera");
    case QWebEnginePage::MediaAudioVideoCapture:
        return BrowserPage::tr("the camera and the microphone");
    case QWebEnginePage::DesktopVideoCapture:
    case QWebEnginePage::DesktopAudioVideoCapture:
        return BrowserPage::tr("the screen");
    case QWebEnginePage::MouseLock:
        return BrowserPage::tr("the mouse pointer");
    }
    return BrowserPage::tr("something");
}

QString hostAndPort(const QUrl &url)
{
    constexpr int httpsPort = 443;
    return url.host() + u':' + QString::number(url.port(httpsPort));
}

} // namespace

BrowserPage::BrowserPage(QWebEngineProfile *profile, QObject *parent) : QWebEnginePage(profile, parent)
{
    onEvent(this, &QWebEnginePage::featurePermissionRequested, this, &BrowserPage::refuseFeature);
    onEvent(this, &QWebEnginePage::certificateError, this,
            [this](const QWebEngineCertificateError &fault) { judgeCertificate(fault); });
    onEvent(this, &QWebEnginePage::newWindowRequested, this,
            [this](QWebEngineNewWindowRequest &request) { openWindow(request); });
    onEvent(this, &QWebEnginePage::authenticationRequired, this,
            [this](const QUrl &url, QAuthenticator *login) { askForLogin(url, login, login->realm()); });
}

bool BrowserPage::acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame)
{
    if (isPageScheme(url.scheme()))
        return !isMainFrame || type != NavigationTypeLinkClicked || !isFollowedElsewhere(url);
    Q_EMIT refused(tr("The page wants to open %1, which is not a page.").arg(url.toDisplayString()));
    return false;
}

void BrowserPage::refuseFeature(const QUrl &origin, Feature feature)
{
    setFeaturePermission(origin, feature, PermissionDeniedByUser);
    Q_EMIT refused(tr("%1 asked for %2, and was refused.").arg(siteOf(origin), nameOf(feature)));
}

// Waits for the answer without holding up the engine, which has other work to do.
void BrowserPage::judgeCertificate(QWebEngineCertificateError fault)
{
    if (!fault.isOverridable()) {
        fault.rejectCertificate();
        return;
    }
    const QString server = hostAndPort(fault.url());
    if (m_accepted.contains(server)) {
        fault.acceptCertificate();
        return;
    }
    fault.defer();
    const QPointer<BrowserPage> alive(this);
    const Answer answer
        = MsgBox(tr("The certificate of \"%1\" is not accepted:\n%2\n\nSomebody may be reading along. "
                    "Open the page all the same, for as long as this window is open?")
                     .arg(fault.url().host(), fault.description()),
                 Buttons::YesNo, BoxIcon::Exclamation);
    if (!alive)
        return;
    if (answer != Answer::Yes) {
        fault.rejectCertificate();
        return;
    }
    m_accepted.insert(server);
    fault.acceptCertificate();
}

void BrowserPage::openWindow(QWebEngineNewWindowRequest &request)
{
    const QUrl url = request.requestedUrl();
    if (!request.isUserInitiated())
        Q_EMIT refused(tr("The page wanted to open a window by itself: %1").arg(url.toDisplayString()));
    else if (isPageScheme(url.scheme()) && !isFollowedElsewhere(url))
        load(url);
}

void BrowserPage::askForLogin(const QUrl &url, QAuthenticator *login, const QString &realm)
{
    const QPointer<BrowserPage> alive(this);
    LoginDialog dialog(url, realm, QWebEngineView::forPage(this));
    const bool given = dialog.exec() == QDialog::Accepted;
    if (!alive)
        return;
    if (!given) {
        // Without this the server would get an empty name and password.
        *login = QAuthenticator();
        return;
    }
    login->setUser(dialog.user());
    login->setPassword(dialog.password());
}

void BrowserPage::javaScriptAlert(const QUrl &origin, const QString &text)
{
    guarded([&] { MsgBox(saying(text), Buttons::OkOnly, BoxIcon::None, siteOf(origin)); });
}

bool BrowserPage::javaScriptConfirm(const QUrl &origin, const QString &text)
{
    bool confirmed = false;
    guarded([&] {
        confirmed = MsgBox(saying(text), Buttons::YesNo, BoxIcon::None, siteOf(origin)) == Answer::Yes;
    });
    return confirmed;
}

bool BrowserPage::javaScriptPrompt(const QUrl &origin,
                                   const QString &text,
                                   const QString &proposal,
                                   QString *answer)
{
    guarded([&] { *answer = InputBox(saying(text), siteOf(origin), proposal); });
    return !answer->isEmpty();
}

} // namespace vandrel
