#include <algorithm>
#include <memory>

#include <QApplication>
#include <QBuffer>
#include <QDesktopServices>
#include <QDialog>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QPdfWriter>
#include <QPrintDialog>
#include <QPrinter>
#include <QProcess>
#include <QPushButton>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QWebEngineView>

#include "controls/DriveView.h"
#include "platform/web/EngineBrowser.h"
#include "platform/web/PageSandbox.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/web/BrowserDesk.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The browser's box on the real engine, against a server of the test's own.
class TestEngineBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void itStartsBlank();
    void aPageComesWithItsEvents();
    void anAddressStandsInTheStatusAsItIs();
    void aPageWithoutATitleHasItsAddress();
    void aRedirectIsOnePair();
    void framesAreOfTheirPage();
    void historyGoesBackAndForward();
    void withoutHistoryThereIsAnError();
    void aMissingPageIsADocument();
    void aRefusedConnectionIsADocument();
    void aSlowPageCanBeStopped();
    void aBareHostIsAskedPlainlyInTheEnd();
    void whatIsNoAddressSaysSo();
    void theBlankPage();
    void homeAndSearchAskNobody();
    void filesOfTheDriveView();
    void scriptsRunInThePage();
    void dialogsOfAPage();
    void aLoginIsAskedFor();
    void aCancelledLoginSendsNothing();
    void aDownloadGoesWhereTheUserSays();
    void aCancelledDownloadLeavesNothing();
    void windowsOpenInTheSamePlace();
    void programsAreNotStarted();
    void aCrashedPageComesBack();
    void offlineShowsWhatWasFetched();
    void aCommandOnTheWayOfflineWaits();
    void aLinkOnTheWayOfflineWaits();
    void aLinkOfflineShowsWhatIsKept();
    void aNewBoxIsOnlineAndBlank();
    void hoveredLinksAreTold();
    void closingWhileAPageLoads();
    void aPageThatStallsHalfwayCanBeStopped();
    void aNetworkThatGoesAwayComesBack();
    void aDownloadThatStallsCanBeCancelled();
    void aDownloadWhoseServerWentAwayGoesOn();
    void aDownloadWhoseServerWentAwayCanBeCancelled();
    void aPageIsPrintedToAFile();
    void theKeysForTheSizeOfAPage();
    void wordsAreFoundInAPage();
    void theArrowsLeadThroughTheHistory();
    void aPdfIsShown();
    void aPageIsGivenTheFileThatTheUserChooses();
};

namespace {

// Stands in for the program that the desktop would start for a mail address.
class ForeignScheme : public QObject
{
    Q_OBJECT

public:
    ForeignScheme() { QDesktopServices::setUrlHandler(u"mailto"_s, this, "open"); }
    ~ForeignScheme() override { QDesktopServices::unsetUrlHandler(u"mailto"_s); }
    Q_INVOKABLE void open(const QUrl &) { ++opened; }

    int opened = 0;
};

} // namespace

void TestEngineBrowser::initTestCase()
{
    if (!runsAsRoot() && !sandboxCanBeMade())
        QSKIP("This system does not let ordinary programs make a sandbox.");
}

void TestEngineBrowser::itStartsBlank()
{
    Desk desk;
    QCOMPARE(desk.box->LocationURL(), u"http:///"_s);
    QCOMPARE(desk.box->LocationName(), QString());
    QCOMPARE(log(), QStringList());
}

void TestEngineBrowser::aPageComesWithItsEvents()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>First page</title><p>Hello");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QCOMPARE(log(), QStringList({u"begin"_s, u"complete"_s, u"document First page"_s}));
    QCOMPARE(desk.box->LocationURL(), desk.server.address(u"/a"_s));
    QCOMPARE(desk.valueOf(u"document.body.innerText"_s), u"Hello"_s);
    QVERIFY(desk.status.contains(u"Opening page %1..."_s.arg(desk.server.address(u"/a"_s))));
    QCOMPARE(desk.status.last(), u"Done"_s);
}

// What is quoted in an address looks like a place for the next value.
void TestEngineBrowser::anAddressStandsInTheStatusAsItIs()
{
    Desk desk;
    desk.server.page(u"/a%2Fb?c=%2520"_s, "<p>Hello");
    const QString address = desk.server.address(u"/a%2Fb?c=%2520"_s);
    QVERIFY(desk.go(address));
    QVERIFY(desk.status.contains(u"Opening page "_s + address + u"..."_s));
    const QStringList loading = desk.status.filter(u"Loading "_s);
    QVERIFY(!loading.isEmpty());
    for (const QString &text : loading)
        QVERIFY2(text.startsWith(u"Loading "_s + address + u": "_s), qPrintable(text));
}

void TestEngineBrowser::aPageWithoutATitleHasItsAddress()
{
    Desk desk;
    desk.server.page(u"/untitled"_s, "<p>Hello");
    QVERIFY(desk.go(desk.server.address(u"/untitled"_s)));
    QVERIFY(desk.box->LocationName().contains(u"/untitled"_s));
}

void TestEngineBrowser::aRedirectIsOnePair()
{
    Desk desk;
    desk.server.answer(
        u"/old"_s, "HTTP/1.1 302 Found\r\nLocation: /new\r\nContent-Length: 0\r\nConnection: close\r\n\r\n");
    desk.server.page(u"/new"_s, "<title>New</title>");
    QVERIFY(desk.go(desk.server.address(u"/old"_s)));
    QCOMPARE(log(), QStringList({u"begin"_s, u"complete"_s, u"document New"_s}));
    QCOMPARE(desk.box->LocationURL(), desk.server.address(u"/new"_s));
}

void TestEngineBrowser::framesAreOfTheirPage()
{
    Desk desk;
    desk.server.page(u"/outer"_s, "<title>Outer</title><iframe src=/inner></iframe>");
    desk.server.page(u"/inner"_s, "<title>Inner</title>");
    QVERIFY(desk.go(desk.server.address(u"/outer"_s)));
    QCOMPARE(log(), QStringList({u"begin"_s, u"complete"_s, u"document Outer"_s}));
    QCOMPARE(desk.server.requests().size(), 2);
}

void TestEngineBrowser::historyGoesBackAndForward()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    desk.server.page(u"/b"_s, "<title>B</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QVERIFY(desk.loads([&] { desk.box->GoBack(); }));
    QCOMPARE(desk.box->LocationName(), u"A"_s);
    QVERIFY(desk.loads([&] { desk.box->GoForward(); }));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
}

void TestEngineBrowser::withoutHistoryThereIsAnError()
{
    Desk desk;
    QVERIFY_THROWS_EXCEPTION(RuntimeError, desk.box->GoBack());
    QVERIFY_THROWS_EXCEPTION(RuntimeError, desk.box->GoForward());
}

void TestEngineBrowser::aMissingPageIsADocument()
{
    Desk desk;
    QVERIFY(desk.go(desk.server.address(u"/missing"_s)));
    QCOMPARE(log().mid(0, 2), QStringList({u"begin"_s, u"complete"_s}));
    QCOMPARE(desk.valueOf(u"document.body.innerText"_s), u"Not found"_s);
    QCOMPARE(desk.status.last(), u"The server answered with error 404."_s);
}

void TestEngineBrowser::aRefusedConnectionIsADocument()
{
    Desk desk;
    QTcpServer closed;
    QVERIFY(closed.listen(QHostAddress::LocalHost));
    const QString address = u"http://127.0.0.1:%1/"_s.arg(closed.serverPort());
    closed.close();
    QVERIFY(desk.go(address));
    QCOMPARE(log().size(), 3);
    QCOMPARE(desk.box->LocationURL(), address);
    QVERIFY(desk.status.last() != u"Done"_s);
}

void TestEngineBrowser::aSlowPageCanBeStopped()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    desk.server.answer(u"/slow"_s, {});
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    log().clear();
    desk.box->Navigate(desk.server.address(u"/slow"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desk.server.unanswered(), 1, patience);
    desk.box->Stop();
    QTRY_COMPARE_WITH_TIMEOUT(log(), QStringList({u"begin"_s, u"complete"_s}), patience);
    QCOMPARE(desk.status.last(), u"Stopped"_s);
    QCOMPARE(desk.box->LocationURL(), desk.server.address(u"/a"_s));
}

void TestEngineBrowser::aBareHostIsAskedPlainlyInTheEnd()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>Plain</title>");
    QVERIFY(desk.go(u"127.0.0.1:%1/a"_s.arg(desk.server.port())));
    QCOMPARE(log(), QStringList({u"begin"_s, u"complete"_s, u"document Plain"_s}));
    QCOMPARE(desk.box->LocationURL(), desk.server.address(u"/a"_s));
}

void TestEngineBrowser::whatIsNoAddressSaysSo()
{
    Desk desk;
    QVERIFY(desk.go(u"<b>hello</b> world"_s));
    QCOMPARE(desk.box->LocationName(), u"This is not an address"_s);
    QVERIFY(desk.valueOf(u"document.body.innerText"_s).contains(u"\"<b>hello</b> world\""_s));
}

void TestEngineBrowser::theBlankPage()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.go({}));
    QCOMPARE(desk.box->LocationURL(), u"http:///"_s);
    QCOMPARE(desk.box->LocationName(), QString());
}

void TestEngineBrowser::homeAndSearchAskNobody()
{
    Desk desk;
    QVERIFY(desk.loads([&] { desk.box->GoHome(); }));
    QCOMPARE(desk.box->LocationName(), u"Start page"_s);
    QVERIFY(desk.loads([&] { desk.box->GoSearch(); }));
    QCOMPARE(desk.box->LocationName(), u"Search"_s);
    QVERIFY(desk.valueOf(u"document.links.length"_s).toInt() >= 3);
    QVERIFY(desk.loads([&] { desk.box->GoBack(); }));
    QCOMPARE(desk.box->LocationName(), u"Start page"_s);
}

void TestEngineBrowser::filesOfTheDriveView()
{
    Desk desk;
    QFile file(desk.folder.filePath(u"a page #1.htm"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write("<title>From disk</title>");
    file.close();
    QVERIFY(desk.go(u"c:\\a page #1.htm"_s));
    QCOMPARE(desk.box->LocationName(), u"From disk"_s);
}

void TestEngineBrowser::scriptsRunInThePage()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    desk.box->Navigate(u"javascript:document.title='changed'"_s);
    QTRY_COMPARE_WITH_TIMEOUT(desk.box->LocationName(), u"changed"_s, patience);
}

void TestEngineBrowser::dialogsOfAPage()
{
    Desk desk;
    desk.prompts.expect(u"An alert"_s, u"127.0.0.1"_s).buttons(Buttons::OkOnly);
    desk.prompts.expect(u"A question"_s, u"127.0.0.1"_s).buttons(Buttons::YesNo).answer(Answer::Yes);
    desk.server.page(u"/a"_s, "<script>alert('An alert');document.title=confirm('A question')</script>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.prompts.allShown());
    QCOMPARE(desk.box->LocationName(), u"true"_s);
}

namespace {

// Fills in or cancels the login dialog as soon as it is there.
void atTheLogin(const std::function<void(QDialog *)> &act)
{
    auto *watch = new QTimer(qApp);
    watch->setInterval(20);
    QObject::connect(watch, &QTimer::timeout, watch, [watch, act] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!dialog || dialog->objectName() != u"LoginDialog"_s)
            return;
        watch->deleteLater();
        watch->stop();
        act(dialog);
    });
    watch->start();
}

const QByteArray refusal = "HTTP/1.1 401 Unauthorized\r\nWWW-Authenticate: Basic realm=\"Private\"\r\n"
                           "Content-Length: 7\r\nConnection: close\r\n\r\nRefused";

} // namespace

void TestEngineBrowser::aLoginIsAskedFor()
{
    Desk desk;
    desk.server.answer(u"/private"_s, refusal);
    atTheLogin([&desk](QDialog *dialog) {
        dialog->findChild<QLineEdit *>(u"user"_s)->setText(u"ann"_s);
        dialog->findChild<QLineEdit *>(u"password"_s)->setText(u"secret"_s);
        desk.server.page(u"/private"_s, "<title>Inside</title>");
        dialog->accept();
    });
    QVERIFY(desk.go(desk.server.address(u"/private"_s)));
    QCOMPARE(desk.box->LocationName(), u"Inside"_s);
    QVERIFY(
        desk.server.lastRequest().contains("Authorization: Basic " + QByteArray("ann:secret").toBase64()));
}

void TestEngineBrowser::aCancelledLoginSendsNothing()
{
    Desk desk;
    desk.server.answer(u"/private"_s, refusal);
    atTheLogin([](QDialog *dialog) { dialog->reject(); });
    QVERIFY(desk.go(desk.server.address(u"/private"_s)));
    QCOMPARE(desk.server.requests().size(), 1);
    QCOMPARE(desk.valueOf(u"document.body.innerText"_s), u"Refused"_s);
}

namespace {

QByteArray fileAnswer(const QByteArray &content)
{
    return "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\n"
           "Content-Disposition: attachment; filename=\"..\\\\x/evil name.bin\"\r\nContent-Length: "
        + QByteArray::number(content.size()) + "\r\nConnection: close\r\n\r\n" + content;
}

} // namespace

void TestEngineBrowser::aDownloadGoesWhereTheUserSays()
{
    Desk desk;
    const QByteArray content = QByteArray("octets\0", 7).repeated(1000);
    desk.server.answer(u"/file"_s, fileAnswer(content));
    desk.place = u"c:\\kept.bin"_s;
    desk.box->Navigate(desk.server.address(u"/file"_s));
    const QString native = desk.folder.filePath(u"kept.bin"_s);
    QTRY_VERIFY_WITH_TIMEOUT(QFile::exists(native), patience);
    QFile kept(native);
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QTRY_COMPARE_WITH_TIMEOUT(kept.size(), qint64{content.size()}, patience);
    QCOMPARE(kept.readAll(), content);
    QCOMPARE(desk.proposed, u"evil name.bin"_s);
    QTRY_COMPARE(log(), QStringList({u"begin"_s, u"complete"_s}));
    QTRY_COMPARE_WITH_TIMEOUT(QDir(desk.folder.path()).entryList(QDir::Files), QStringList(u"kept.bin"_s),
                              patience);
}

void TestEngineBrowser::aCancelledDownloadLeavesNothing()
{
    Desk desk;
    desk.server.answer(u"/file"_s, fileAnswer("octets"));
    desk.box->Navigate(desk.server.address(u"/file"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desk.proposed, u"evil name.bin"_s, patience);
    QTRY_COMPARE_WITH_TIMEOUT(log(), QStringList({u"begin"_s, u"complete"_s}), patience);
    QCOMPARE(QDir(desk.folder.path()).entryList(QDir::Files), QStringList());
}

void TestEngineBrowser::windowsOpenInTheSamePlace()
{
    Desk desk;
    desk.server.page(
        u"/a"_s,
        "<title>A</title><a id=link target=_blank href=/b style='display:block;height:300px'>go</a>");
    desk.server.page(u"/b"_s, "<title>B</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.pointAt({100, 100}, desk.server.address(u"/b"_s)));
    QVERIFY(desk.loads([&] {
        QTest::mouseClick(desk.box->findChild<QWebEngineView *>()->focusProxy(), Qt::LeftButton, {},
                          {100, 100});
    }));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
}

void TestEngineBrowser::programsAreNotStarted()
{
    Desk desk;
    ForeignScheme mail;
    desk.server.page(u"/a"_s, "<title>A</title><script>location='mailto:someone@example.org'</script>");
    desk.server.page(u"/b"_s, "<title>B</title>");
    desk.box->Navigate(desk.server.address(u"/a"_s));
    QTRY_COMPARE_WITH_TIMEOUT(log().mid(0, 2), QStringList({u"begin"_s, u"complete"_s}), patience);
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QCOMPARE(mail.opened, 0);
}

void TestEngineBrowser::aCrashedPageComesBack()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    const qint64 renderer = desk.page()->renderProcessPid();
    QVERIFY(renderer > 0);
    QVERIFY(desk.loads([&] {
        QCOMPARE(QProcess::execute(u"kill"_s, {u"-9"_s, QString::number(renderer)}), 0);
    }));
    QTRY_COMPARE_WITH_TIMEOUT(desk.box->LocationName(), u"The page has crashed"_s, patience);
    QVERIFY(desk.loads([&] { desk.box->Refresh(); }));
    QTRY_COMPARE_WITH_TIMEOUT(desk.box->LocationName(), u"A"_s, patience);
}

void TestEngineBrowser::offlineShowsWhatWasFetched()
{
    Desk desk;
    desk.server.page(u"/kept"_s, "<title>Kept</title>", "Cache-Control: max-age=3600\r\n");
    desk.server.page(u"/not-kept"_s, "<title>Not kept</title>", "Cache-Control: no-store\r\n");
    QVERIFY(desk.go(desk.server.address(u"/not-kept"_s)));
    QVERIFY(desk.go(desk.server.address(u"/kept"_s)));
    QVERIFY(desk.go({}));
    const QStringList before = desk.server.requests();
    desk.box->setOffline(true);
    QVERIFY(desk.go(desk.server.address(u"/kept"_s)));
    QCOMPARE(desk.box->LocationName(), u"Kept"_s);
    QVERIFY(desk.go(desk.server.address(u"/not-kept"_s)));
    QCOMPARE(desk.box->LocationName(), u"Offline"_s);
    QVERIFY(desk.go(desk.server.address(u"/never-seen"_s)));
    QCOMPARE(desk.box->LocationName(), u"Offline"_s);
    QVERIFY(desk.go(u"http://example.invalid/"_s));
    QCOMPARE(desk.box->LocationName(), u"Offline"_s);
    QCOMPARE(desk.server.requests(), before);
    // The page that says so is not one that anybody opened.
    QVERIFY(desk.status.contains(u"Opening page http://example.invalid/..."_s));
    QCOMPARE(desk.status.filter(u"data:"_s), QStringList());
}

void TestEngineBrowser::aCommandOnTheWayOfflineWaits()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>", "Cache-Control: max-age=3600\r\n");
    desk.server.page(u"/b"_s, "<title>B</title>", "Cache-Control: max-age=3600\r\n");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    desk.box->setOffline(true);
    QVERIFY(desk.loads([&] { desk.box->GoBack(); }));
    QCOMPARE(desk.box->LocationName(), u"A"_s);
    QCOMPARE(desk.server.requests().size(), 2);
}

namespace {

const QByteArray linkToB = "<title>A</title><a id=link href=/b style='display:block;height:300px'>go</a>";

void clickTheLink(const Desk &desk)
{
    QTest::mouseClick(desk.box->findChild<QWebEngineView *>()->focusProxy(), Qt::LeftButton, {}, {100, 100});
}

} // namespace

void TestEngineBrowser::aLinkOnTheWayOfflineWaits()
{
    Desk desk;
    desk.server.page(u"/a"_s, linkToB, "Cache-Control: max-age=3600\r\n");
    desk.server.page(u"/b"_s, "<title>B</title>", "Cache-Control: max-age=3600\r\n");
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.pointAt({100, 100}, desk.server.address(u"/b"_s)));
    QVERIFY(desk.loads([&] {
        desk.box->setOffline(true);
        clickTheLink(desk);
    }));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
    QCOMPARE(desk.server.requests().size(), 2);
}

// A page that has to be asked for again is shown as it was.
void TestEngineBrowser::aLinkOfflineShowsWhatIsKept()
{
    Desk desk;
    desk.server.page(u"/a"_s, linkToB, "Cache-Control: max-age=3600\r\n");
    desk.server.page(u"/b"_s, "<title>B</title>", "Cache-Control: max-age=0\r\n");
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    desk.box->setOffline(true);
    QVERIFY(desk.go(u"http://example.invalid/"_s));
    QCOMPARE(desk.box->LocationName(), u"Offline"_s);
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.pointAt({100, 100}, desk.server.address(u"/b"_s)));
    QVERIFY(desk.loads([&] { clickTheLink(desk); }));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
    QCOMPARE(desk.server.requests().size(), 2);
}

void TestEngineBrowser::aNewBoxIsOnlineAndBlank()
{
    {
        Desk desk;
        desk.box->setOffline(true);
    }
    Desk desk;
    QCOMPARE(desk.box->LocationURL(), u"http:///"_s);
    desk.server.page(u"/a"_s, "<title>A</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QCOMPARE(desk.box->LocationName(), u"A"_s);
}

void TestEngineBrowser::hoveredLinksAreTold()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title><a href=/b style='display:block;height:300px'>go</a>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.pointAt({100, 100}, desk.server.address(u"/b"_s)));
}

void TestEngineBrowser::closingWhileAPageLoads()
{
    Desk desk;
    desk.server.answer(u"/slow"_s, {});
    desk.box->Navigate(desk.server.address(u"/slow"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desk.server.unanswered(), 1, patience);
    desk.box.reset();
    QCoreApplication::processEvents();
}

namespace {

const QByteArray halfAPage = "HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: 100000\r\n\r\n"
                             "<title>Half</title><p>The beginning"
    + QByteArray(4096, ' ');

} // namespace

void TestEngineBrowser::aPageThatStallsHalfwayCanBeStopped()
{
    Desk desk;
    desk.server.answerInPart(u"/half"_s, halfAPage);
    desk.server.page(u"/b"_s, "<title>B</title>");
    desk.box->Navigate(desk.server.address(u"/half"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desk.page()->title(), u"Half"_s, patience);
    QCOMPARE(log(), QStringList(u"begin"_s));
    desk.box->Stop();
    QTRY_COMPARE_WITH_TIMEOUT(log(), QStringList({u"begin"_s, u"complete"_s}), patience);
    QCOMPARE(desk.status.last(), u"Stopped"_s);
    QCOMPARE(desk.valueOf(u"document.body.innerText.trim()"_s), u"The beginning"_s);
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
}

// What came of it stays to be read.
void TestEngineBrowser::aNetworkThatGoesAwayComesBack()
{
    Desk desk;
    desk.server.answerInPart(u"/half"_s, halfAPage);
    desk.box->Navigate(desk.server.address(u"/half"_s));
    QTRY_COMPARE_WITH_TIMEOUT(desk.page()->title(), u"Half"_s, patience);
    desk.server.setAway(true);
    QTRY_COMPARE_WITH_TIMEOUT(log(), QStringList({u"begin"_s, u"complete"_s, u"document Half"_s}), patience);
    QVERIFY(desk.status.last().contains(u"broke off"_s));
    QVERIFY(desk.loads([&] { desk.box->Refresh(); }));
    QVERIFY2(desk.status.last().startsWith(u"The page could not be loaded"_s),
             qPrintable(desk.status.last()));
    QVERIFY(!desk.valueOf(u"document.body.innerText.trim()"_s).contains(u"The beginning"_s));
    desk.server.setAway(false);
    desk.server.page(u"/half"_s, "<title>Whole</title>");
    QVERIFY(desk.loads([&] { desk.box->Refresh(); }));
    QCOMPARE(desk.box->LocationName(), u"Whole"_s);
    QCOMPARE(desk.status.last(), u"Done"_s);
}

namespace {

const QByteArray halfAFile
    = "HTTP/1.1 200 OK\r\nContent-Type: application/octet-stream\r\nContent-Disposition: attachment; "
      "filename=file.bin\r\nContent-Length: 100000\r\n\r\n"
    + QByteArray(5000, 'x');

QPushButton *buttonOf(const Desk &desk, const QString &caption)
{
    const auto buttons = desk.box->findChild<QWidget *>(u"PageDownloads"_s)->findChildren<QPushButton *>();
    const auto found = std::find_if(buttons.begin(), buttons.end(),
                                    [&](const QPushButton *button) { return button->text() == caption; });
    return found == buttons.end() ? nullptr : *found;
}

// The text of the one download's row that ends so.
bool awaitRow(const Desk &desk, const QString &text)
{
    const auto shown = [&desk] {
        const auto labels = desk.box->findChild<QWidget *>(u"PageDownloads"_s)->findChildren<QLabel *>();
        return labels.size() == 1 ? labels.first()->text() : QString();
    };
    if (QTest::qWaitFor([&] { return shown().contains(text); }, patience))
        return true;
    qWarning() << "The row says:" << shown();
    return false;
}

} // namespace

void TestEngineBrowser::aDownloadThatStallsCanBeCancelled()
{
    Desk desk;
    desk.server.answerInPart(u"/file"_s, halfAFile);
    desk.server.page(u"/b"_s, "<title>B</title>");
    desk.place = u"c:\\kept.bin"_s;
    QFile before(desk.folder.filePath(u"kept.bin"_s));
    QVERIFY(before.open(QIODevice::WriteOnly));
    before.write("before");
    before.close();
    desk.box->Navigate(desk.server.address(u"/file"_s));
    QVERIFY(awaitRow(desk, u"5.0 kB"_s));
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    buttonOf(desk, u"Cancel"_s)->click();
    QVERIFY(awaitRow(desk, u"cancelled"_s));
    QTRY_COMPARE_WITH_TIMEOUT(QDir(desk.folder.path()).entryList(QDir::Files), QStringList(u"kept.bin"_s),
                              patience);
    QVERIFY(before.open(QIODevice::ReadOnly));
    QCOMPARE(before.readAll(), QByteArray("before"));
}

// The server goes away in the middle of its answer, and is there when it is asked again.
void TestEngineBrowser::aDownloadWhoseServerWentAwayGoesOn()
{
    Desk desk;
    desk.server.answerInPart(u"/file"_s, halfAFile);
    desk.place = u"c:\\kept.bin"_s;
    desk.box->Navigate(desk.server.address(u"/file"_s));
    QVERIFY(awaitRow(desk, u"5.0 kB"_s));
    desk.proposed.clear();
    desk.server.setAway(true);
    QVERIFY(awaitRow(desk, u"interrupted"_s));
    desk.server.answer(u"/file"_s, fileAnswer(QByteArray(100'000, 'x')));
    desk.server.setAway(false);
    buttonOf(desk, u"Try again"_s)->click();
    QVERIFY(awaitRow(desk, u"saved"_s));
    QVERIFY(!buttonOf(desk, u"Try again"_s)->isVisible());
    QVERIFY2(desk.proposed.isEmpty(), "the place was asked for again");
    QFile kept(desk.folder.filePath(u"kept.bin"_s));
    QVERIFY(kept.open(QIODevice::ReadOnly));
    QCOMPARE(kept.readAll(), QByteArray(100'000, 'x'));
}

void TestEngineBrowser::aDownloadWhoseServerWentAwayCanBeCancelled()
{
    Desk desk;
    desk.server.answerInPart(u"/file"_s, halfAFile);
    desk.place = u"c:\\kept.bin"_s;
    desk.box->Navigate(desk.server.address(u"/file"_s));
    QVERIFY(awaitRow(desk, u"5.0 kB"_s));
    desk.server.setAway(true);
    QVERIFY(awaitRow(desk, u"interrupted"_s));
    buttonOf(desk, u"Cancel"_s)->click();
    QVERIFY(awaitRow(desk, u"cancelled"_s));
    QTRY_COMPARE_WITH_TIMEOUT(QDir(desk.folder.path()).entryList(QDir::Files), QStringList(), patience);
}

void TestEngineBrowser::aPageIsPrintedToAFile()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title><p>Words on paper");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    const QString file = desk.folder.filePath(u"page.pdf"_s);
    QTimer atTheDialog;
    atTheDialog.setInterval(20);
    QObject::connect(&atTheDialog, &QTimer::timeout, [&] {
        auto *dialog = qobject_cast<QPrintDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        atTheDialog.stop();
        dialog->printer()->setOutputFormat(QPrinter::PdfFormat);
        dialog->printer()->setOutputFileName(file);
        dialog->done(QDialog::Accepted);
    });
    atTheDialog.start();
    QTest::keyClick(desk.box.get(), Qt::Key_P, Qt::ControlModifier);
    QTRY_VERIFY_WITH_TIMEOUT(desk.status.contains(u"Printed"_s), patience);
    QFile printed(file);
    QVERIFY(printed.open(QIODevice::ReadOnly));
    QCOMPARE(printed.read(5), QByteArray("%PDF-"));
    QVERIFY(printed.size() > 1000);
}

void TestEngineBrowser::theKeysForTheSizeOfAPage()
{
    Desk desk;
    const auto press = [&](Qt::Key key) { QTest::keyClick(desk.box.get(), key, Qt::ControlModifier); };
    desk.server.page(u"/a"_s, "<title>A</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    press(Qt::Key_Plus);
    QCOMPARE(desk.page()->zoomFactor(), 1.1);
    press(Qt::Key_Equal);
    QCOMPARE(desk.page()->zoomFactor(), 1.21);
    press(Qt::Key_0);
    QCOMPARE(desk.page()->zoomFactor(), 1.0);
    for (int i = 0; i < 30; ++i)
        press(Qt::Key_Minus);
    QCOMPARE(desk.page()->zoomFactor(), 0.25);
}

void TestEngineBrowser::wordsAreFoundInAPage()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title><p>One bean, two beans, three peas");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QTest::keyClick(desk.box.get(), Qt::Key_F, Qt::ControlModifier);
    auto *bar = desk.box->findChild<QWidget *>(u"FindBar"_s);
    auto *words = bar->findChild<QLineEdit *>();
    const auto *found = bar->findChild<QLabel *>(u"found"_s);
    QVERIFY(bar->isVisible());
    words->setText(u"bean"_s);
    QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"1 of 2"_s, patience);
    QTest::keyClick(words, Qt::Key_Return);
    QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"2 of 2"_s, patience);
    words->setText(u"rice"_s);
    QTRY_COMPARE_WITH_TIMEOUT(found->text(), u"0 of 0"_s, patience);
    QTest::keyClick(words, Qt::Key_Escape);
    QVERIFY(!bar->isVisible());
}

void TestEngineBrowser::theArrowsLeadThroughTheHistory()
{
    Desk desk;
    desk.server.page(u"/a"_s, "<title>A</title>");
    desk.server.page(u"/b"_s, "<title>B</title>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QVERIFY(desk.go(desk.server.address(u"/b"_s)));
    QVERIFY(desk.loads([&] { QTest::keyClick(desk.box.get(), Qt::Key_Left, Qt::AltModifier); }));
    QCOMPARE(desk.box->LocationName(), u"A"_s);
    QVERIFY(desk.loads([&] { QTest::keyClick(desk.box.get(), Qt::Key_Right, Qt::AltModifier); }));
    QCOMPARE(desk.box->LocationName(), u"B"_s);
}

void TestEngineBrowser::aPdfIsShown()
{
    Desk desk;
    QBuffer pdf;
    QVERIFY(pdf.open(QIODevice::WriteOnly));
    {
        QPdfWriter writer(&pdf);
        QPainter(&writer).drawText(100, 100, u"Words on paper"_s);
    }
    desk.server.answer(u"/a.pdf"_s,
                       "HTTP/1.1 200 OK\r\nContent-Type: application/pdf\r\nContent-Length: "
                           + QByteArray::number(pdf.data().size()) + "\r\nConnection: close\r\n\r\n"
                           + pdf.data());
    QVERIFY(desk.go(desk.server.address(u"/a.pdf"_s)));
    QVERIFY(desk.valueOf(u"document.querySelector('embed').type"_s).contains(u"pdf"_s));
    QCOMPARE(desk.proposed, QString());
    QCOMPARE(desk.status.last(), u"Done"_s);
}

void TestEngineBrowser::aPageIsGivenTheFileThatTheUserChooses()
{
    Desk desk;
    QFile letter(desk.folder.filePath(u"letter.txt"_s));
    QVERIFY(letter.open(QIODevice::WriteOnly));
    letter.write("Dear Ann");
    letter.close();
    desk.server.page(u"/a"_s,
                     "<title>A</title><input type=file id=f onchange='document.title=this.files[0].name'>"
                     "<a id=link href='javascript:document.getElementById(\"f\").click()' "
                     "style='display:block;height:300px'>choose</a>");
    QVERIFY(desk.go(desk.server.address(u"/a"_s)));
    QTimer atTheDialog;
    atTheDialog.setInterval(20);
    QObject::connect(&atTheDialog, &QTimer::timeout, [&] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        if (!dialog)
            return;
        atTheDialog.stop();
        // A file that is selected is not written into the line that has the keyboard.
        dialog->findChild<QLineEdit *>(u"fileNameEdit"_s)->setText(letter.fileName());
        QMetaObject::invokeMethod(dialog, "accept");
    });
    atTheDialog.start();
    QVERIFY(desk.pointAt({100, 100}, u"javascript:document.getElementById(%22f%22).click()"_s));
    clickTheLink(desk);
    QTRY_COMPARE_WITH_TIMEOUT(desk.box->LocationName(), u"letter.txt"_s, patience);
}

QTEST_MAIN(TestEngineBrowser)
#include "TestEngineBrowser.moc"
