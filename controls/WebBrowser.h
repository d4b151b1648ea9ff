#pragma once

#include <QString>
#include <QWidget>

namespace vandrel {

/// A box of a window that shows web pages. User-interface thread only.
///
/// What is fetched is fetched meanwhile: every command returns at once. Events are raised through the gate, in the
/// order of what they tell of. DownloadBegin and DownloadComplete come in pairs, one pair for each page that is loaded,
/// whether the load ends well, fails or is stopped; a load that takes the place of another one belongs to its pair.
///
/// Each box has a store of its own for pages, cookies and permissions, which goes with it.
class WebBrowser : public QWidget
{
    Q_OBJECT

public:
    using QWidget::QWidget;

    /// Places the box in its parent, in twips; a negative size counts as 0.
    void setLeft(int left);
    void setTop(int top);
    void setWidth(int width);
    void setHeight(int height);

    /// The page before or behind the one shown. Raises Invalid procedure call (5) where there is none.
    virtual void GoBack() = 0;
    virtual void GoForward() = 0;
    /// Ends what is being loaded; nothing happens when nothing is.
    virtual void Stop() = 0;
    /// The suite's own start page and the page that lists search services. Neither asks the network.
    virtual void GoHome() = 0;
    virtual void GoSearch() = 0;
    /// Loads the page shown again. Offline it keeps the page as it is.
    virtual void Refresh() = 0;

    /// Goes to what a person typed: a full address (http, https, file, data, about), a host with or without port and
    /// path (https is tried first, then http), a file's path in the drive view ("C:\page.htm") or in the system's own
    /// form ("/home/me/page.htm"), or "" for the blank page. Anything else is told on a page of its own. `javascript:`
    /// runs in the page shown.
    virtual void Navigate(const QString &typed) = 0;

    /// True: from now on only what was fetched before is shown, no request leaves the computer, and a page that was not
    /// fetched says so. It cannot be undone: false does nothing.
    virtual void setOffline(bool offline) = 0;

    /// The address of the page shown; "http:///" for the blank page.
    virtual QString LocationURL() const = 0;
    /// The title of the page shown, or its address where it has none; empty for the blank page.
    virtual QString LocationName() const = 0;

Q_SIGNALS:
    /// What the browser is doing, or the address of the link under the pointer; "" for nothing.
    void StatusTextChange(const QString &Text);
    void DownloadBegin();
    void DownloadComplete();
    /// A document is there to be seen, with its title and address. Pages that tell of a failure are documents.
    void DocumentComplete();
};

} // namespace vandrel
