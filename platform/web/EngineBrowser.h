#pragma once

#include <functional>
#include <memory>
#include <optional>

#include <QTimer>
#include <QUrl>

#include "controls/WebBrowser.h"

class QWebEngineLoadingInfo;
class QWebEngineView;

namespace vandrel {

class BrowserPage;
class CommonDialog;
class DriveView;
class FindBar;
class PageDownloads;
class PageStore;

/// The browser's box on the toolkit's Chromium view.
///
/// Keys beside those of the window: Ctrl+plus, Ctrl+minus and Ctrl+0 zoom, Ctrl+F finds in the page, Ctrl+P prints,
/// Alt+Left and Alt+Right go back and forward, F5 and Ctrl+R load the page again, Esc stops.
class EngineBrowser : public WebBrowser
{
    Q_OBJECT

public:
    using DialogMaker = std::function<std::unique_ptr<CommonDialog>()>;

    /// Raises Cannot create object (429) where the engine cannot run.
    EngineBrowser(std::shared_ptr<DriveView> drives, DialogMaker makeDialog);
    ~EngineBrowser() override;

    void GoBack() override;
    void GoForward() override;
    void Stop() override;
    void GoHome() override;
    void GoSearch() override;
    void Refresh() override;
    void Navigate(const QString &typed) override;
    void setOffline(bool offline) override;
    QString LocationURL() const override;
    QString LocationName() const override;

private:
    void arrange();
    void connectPage();
    void addShortcuts();
    void addShortcut(const QKeySequence &keys, void (EngineBrowser::*action)());
    void whenReady(std::function<void()> action);
    void open(const QUrl &url);
    void openGuess(const QUrl &url);
    bool openFromHistory(const QUrl &url);
    bool followOffline(const QUrl &link);
    void showFailure(const QString &heading, const QString &text, const QUrl &address);
    void follow(const QWebEngineLoadingInfo &loading);
    void openAtRest(const QUrl &link);
    void begin(const QUrl &url);
    void finish(const QWebEngineLoadingInfo &loading);
    bool triesPlainTwin(const QWebEngineLoadingInfo &loading);
    bool tellsOfOffline(const QWebEngineLoadingInfo &loading);
    void tellStatus(const QString &text);
    void tellOfTheSandbox();
    void explainLostPage();
    void print();
    void openFindBar();
    void zoomIn();
    void zoomOut();
    void zoomToNormal();

    std::shared_ptr<DriveView> m_drives;
    std::unique_ptr<PageStore> m_store;
    std::unique_ptr<BrowserPage> m_page;
    QWebEngineView *m_view;
    FindBar *m_findBar;
    PageDownloads *m_downloads;
    // The encrypted address that was guessed from a bare host, until its load has ended.
    QUrl m_guessed;
    // The guess is given up when nothing has come for a while.
    QTimer m_guessPatience;
    // What is to be done as soon as the box is offline.
    std::function<void()> m_waiting;
    // The link that is opened as soon as the engine has ended its own way there.
    QUrl m_link;
    // The address of the page whose process was lost, for Refresh.
    QUrl m_lost;
    // The page that is being opened, as the status names it.
    QString m_opening;
    QString m_status;
    QString m_shownStatus;
    bool m_loading = false;
    // Whether the next page to begin is one of our own that explains a failure.
    bool m_explains = false;
};

} // namespace vandrel
