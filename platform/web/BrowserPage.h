#pragma once

#include <functional>

#include <QSet>
#include <QWebEngineCertificateError>
#include <QWebEnginePage>

class QWebEngineNewWindowRequest;

namespace vandrel {

/// The page of a browser's box: what a page may do there, and what the user is asked.
///
/// A page has no camera, microphone, place or notification, starts no programs by foreign schemes, and opens windows
/// only at a click, in its own place. A certificate that is not accepted is refused, unless the user accepts the host's
/// for as long as the page lives.
class BrowserPage : public QWebEnginePage
{
    Q_OBJECT

public:
    explicit BrowserPage(QWebEngineProfile *profile, QObject *parent = nullptr);

    /// Is asked before a link that the user has followed is opened; true means that it is opened in another way.
    void setLinkFollower(std::function<bool(const QUrl &)> follower) { m_followLink = std::move(follower); }

Q_SIGNALS:
    /// A sentence on what a page was refused.
    void refused(const QString &sentence);

protected:
    bool acceptNavigationRequest(const QUrl &url, NavigationType type, bool isMainFrame) override;
    void javaScriptAlert(const QUrl &origin, const QString &text) override;
    bool javaScriptConfirm(const QUrl &origin, const QString &text) override;
    bool javaScriptPrompt(const QUrl &origin,
                          const QString &text,
                          const QString &proposal,
                          QString *answer) override;
    void
    javaScriptConsoleMessage(JavaScriptConsoleMessageLevel, const QString &, int, const QString &) override
    { }

private:
    void refuseFeature(const QUrl &origin, Feature feature);
    void judgeCertificate(QWebEngineCertificateError fault);
    void openWindow(QWebEngineNewWindowRequest &request);
    void askForLogin(const QUrl &url, QAuthenticator *login, const QString &realm);

    bool isFollowedElsewhere(const QUrl &url) const { return m_followLink && m_followLink(url); }

    std::function<bool(const QUrl &)> m_followLink;
    // "host:port" of the certificates that the user has accepted.
    QSet<QString> m_accepted;
};

} // namespace vandrel
