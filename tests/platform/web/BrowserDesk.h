#pragma once

#include <memory>

#include <QSignalSpy>
#include <QStringList>
#include <QTemporaryDir>
#include <QTest>
#include <QWebEnginePage>
#include <QWebEngineView>

#include "controls/DriveView.h"
#include "platform/web/EngineBrowser.h"
#include "tests/platform/web/PageServer.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/ScriptedPrompts.h"

namespace vandrel::test {

/// Bounds a wait, in milliseconds.
constexpr int patience = 90'000;

/// The events of the box: "begin", "complete", "document TITLE".
inline QStringList &log()
{
    static QStringList events;
    return events;
}

/// A browser's box in a window, with a note of its events, and the server of its pages.
class Desk
{
public:
    Desk()
    {
        drives->setDrive('c', folder.path().toUtf8());
        drives->setDrive('z', "/");
        log().clear();
        box = std::make_unique<EngineBrowser>(drives, [this] { return makeDialog(); });
        QObject::connect(box.get(), &WebBrowser::DownloadBegin, [] { log() += u"begin"_qs; });
        QObject::connect(box.get(), &WebBrowser::DownloadComplete, [] { log() += u"complete"_qs; });
        QObject::connect(box.get(), &WebBrowser::DocumentComplete,
                         [this] { log() += u"document "_qs + box->LocationName(); });
        QObject::connect(box.get(), &WebBrowser::StatusTextChange,
                         [this](const QString &text) { status += text; });
        box->resize(600, 400);
        box->show();
    }

    std::unique_ptr<CommonDialog> makeDialog() const
    {
        auto dialog = std::make_unique<FakeCommonDialog>();
        dialog->meanwhile = [this, shown = dialog.get()] { proposed = shown->FileName; };
        if (place.isEmpty())
            dialog->cancel();
        else
            dialog->choose(place);
        return dialog;
    }

    /// Goes there and waits for the end of the load.
    bool go(const QString &typed)
    {
        return loads([&] { box->Navigate(typed); });
    }

    template<typename Action>
    bool loads(Action action)
    {
        QSignalSpy ended(box.get(), &WebBrowser::DocumentComplete);
        action();
        return ended.count() > 0 || ended.wait(patience);
    }

    QWebEnginePage *page() const { return box->findChild<QWebEngineView *>()->page(); }

    /// What a script in the page comes to.
    QString valueOf(const QString &script) const
    {
        QString value = u"(nothing)"_qs;
        bool done = false;
        page()->runJavaScript(script, [&](const QVariant &result) {
            value = result.toString();
            done = true;
        });
        return QTest::qWaitFor([&] { return done; }, patience) ? value : u"(no answer)"_qs;
    }

    /// Until a page that has been loaded has also been painted, the engine takes no presses of a button.
    bool isPainted() const
    {
        return QTest::qWaitFor(
            [this] { return valueOf(u"performance.getEntriesByType('paint').length"_qs) != u"0"; }, patience);
    }

    /// Moves the pointer over the place until the page, once it is painted, says which link lies there.
    bool pointAt(QPoint spot, const QString &url) const
    {
        if (!isPainted())
            return false;
        QWidget *surface = box->findChild<QWebEngineView *>()->focusProxy();
        int nudge = 0;
        return QTest::qWaitFor(
            [&] {
                QTest::mouseMove(surface, spot + QPoint(++nudge % 5, 0));
                return !status.isEmpty() && status.last() == url;
            },
            patience);
    }

    QTemporaryDir folder;
    std::shared_ptr<DriveView> drives = std::make_shared<DriveView>();
    PageServer server;
    ScriptedPrompts prompts;
    std::unique_ptr<EngineBrowser> box;
    QStringList status;
    mutable QString proposed;
    QString place;
};

} // namespace vandrel::test
