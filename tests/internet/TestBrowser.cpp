#include <memory>

#include <QLineEdit>
#include <QPointer>
#include <QShortcut>
#include <QTest>
#include <QTimer>

#include "controls/CommandButton.h"
#include "controls/CoolBar.h"
#include "controls/Label.h"
#include "controls/StatusBar.h"
#include "internet/frmBrowse.h"
#include "runtime/Clock.h"
#include "runtime/RuntimeError.h"
#include "runtime/Twips.h"
#include "tests/support/FakeWebBrowser.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The browser's window on a scripted browser.
class TestBrowser : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void theButtons_data();
    void theButtons();
    void namesForAssistiveTools();
    void nothingIsNavigatedAtLoad();
    void eachButtonGivesOneCommand_data();
    void eachButtonGivesOneCommand();
    void aButtonsFailureIsPassedOver_data();
    void aButtonsFailureIsPassedOver();
    void offlineIsOnlyEverSet();
    void enterNavigatesToWhatIsTyped_data();
    void enterNavigatesToWhatIsTyped();
    void otherKeysAreLeftToTheBox();
    void aRefusedNavigationIsAnError();
    void theStatusIsShownAsItComes();
    void aLongStatusLeavesRoomForTheTime();
    void theStartEmptiesTheTime();
    void theTimeIsRoundedTwice_data();
    void theTimeIsRoundedTwice();
    void theAddressFollowsThePage_data();
    void theAddressFollowsThePage();
    void theStartsBoxIsLeftAlone();
    void theTitleFollowsEachDocument();
    void theLayoutRule();
    void theAddressBoxGrowsWithTheWindow();
    void aMinimisedWindowMovesThePageAlone();
    void aHigherBarPutsThePageBelowIt();
    void theLayoutIsRepeatedSixTimes();
    void aResizeDoesNotStartTheCountAnew();
    void theKeysForTheAddress_data();
    void theKeysForTheAddress();
    void theTabOrder();
    void closingTheWindowTakesTheBrowserWithIt();

    void cleanup() { Clock::reset(); }
};

namespace {

QTime at(double seconds)
{
    return QTime::fromMSecsSinceStartOfDay(qRound(seconds * 1000));
}

void setClock(double seconds)
{
    Clock::set(QDateTime(QDate(2026, 11, 21), at(seconds)));
}

// The window on its fake.
class Desk
{
public:
    Desk()
    {
        auto fake = std::make_unique<FakeWebBrowser>();
        browser = fake.get();
        form = std::make_unique<frmBrowse>(std::move(fake));
    }

    void download(double from, double until) const
    {
        setClock(from);
        Q_EMIT browser->DownloadBegin();
        setClock(until);
        Q_EMIT browser->DownloadComplete();
    }

    ScriptedPrompts prompts;
    FakeWebBrowser *browser = nullptr;
    std::unique_ptr<frmBrowse> form;
};

} // namespace

void TestBrowser::theWindow()
{
    const Desk desk;
    QCOMPARE(desk.form->objectName(), u"frmBrowse"_s);
    QCOMPARE(desk.form->windowTitle(), u"Internet - "_s);
    QCOMPARE(desk.form->size(), QSize(527, 436));
    QCOMPARE(desk.form->Text1->text(), QString());
    QCOMPARE(desk.form->panel1->text(), QString());
    QCOMPARE(desk.form->panel2->text(), QString());
    QVERIFY(desk.form->Timer1->isActive());
    QCOMPARE(desk.form->Timer1->interval(), 200);
    QCOMPARE(desk.form->ResizeTicks.value(), qint16(0));
}

void TestBrowser::theButtons_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<int>("left");
    QTest::newRow("Command1_0") << u"Back"_s << 0;
    QTest::newRow("Command1_1") << u"Forward"_s << 1080;
    QTest::newRow("Command1_2") << u"Stop"_s << 2160;
    QTest::newRow("Command1_3") << u"Home"_s << 3240;
    QTest::newRow("Command1_4") << u"Search"_s << 4320;
    QTest::newRow("Command1_5") << u"Refresh"_s << 5400;
    QTest::newRow("Command1_6") << u"Offline"_s << 6480;
}

void TestBrowser::theButtons()
{
    QFETCH(QString, caption);
    QFETCH(int, left);
    const Desk desk;
    const auto *button
        = desk.form->Frame1->findChild<CommandButton *>(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(button);
    QCOMPARE(button->text(), caption);
    QCOMPARE(button->pos(), QPoint(pixels(left), 0));
    QCOMPARE(button->size(), QSize(73, 25));
    QCOMPARE(button->font().family(), u"Comic Sans MS"_s);
    QCOMPARE(button->font().pixelSize(), 13);
}

void TestBrowser::namesForAssistiveTools()
{
    const Desk desk;
    QCOMPARE(desk.form->Text1->accessibleName(), u"Address"_s);
    QCOMPARE(desk.form->web->accessibleName(), u"Page"_s);
    QCOMPARE(desk.form->web->objectName(), u"web"_s);
    QCOMPARE(desk.form->cb->objectName(), u"cb"_s);
    QCOMPARE(desk.form->sb->objectName(), u"sb"_s);
    QCOMPARE(desk.form->Frame1->objectName(), u"Frame1"_s);
}

void TestBrowser::nothingIsNavigatedAtLoad()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    QCOMPARE(desk.browser->takeCalls(), QStringList());
}

void TestBrowser::eachButtonGivesOneCommand_data()
{
    QTest::addColumn<QString>("call");
    int index = 0;
    for (const char *call :
         {"GoBack", "GoForward", "Stop", "GoHome", "GoSearch", "Refresh", "Offline = True"})
        QTest::addRow("%d", index++) << QString::fromLatin1(call);
}

void TestBrowser::eachButtonGivesOneCommand()
{
    QFETCH(QString, call);
    const Desk desk;
    desk.form->Command1[QByteArray(QTest::currentDataTag()).toInt()]->click();
    QCOMPARE(desk.browser->takeCalls(), QStringList(call));
}

void TestBrowser::aButtonsFailureIsPassedOver_data()
{
    eachButtonGivesOneCommand_data();
}

void TestBrowser::aButtonsFailureIsPassedOver()
{
    QFETCH(QString, call);
    const Desk desk;
    desk.browser->failure = error::InvalidProcedureCall;
    desk.form->Command1[QByteArray(QTest::currentDataTag()).toInt()]->click();
    QCOMPARE(desk.browser->takeCalls(), QStringList(call));
    QCOMPARE(desk.prompts.shown(), 0);
}

void TestBrowser::offlineIsOnlyEverSet()
{
    const Desk desk;
    desk.form->Command1[6]->click();
    desk.form->Command1[6]->click();
    QCOMPARE(desk.browser->takeCalls(), QStringList({u"Offline = True"_s, u"Offline = True"_s}));
}

void TestBrowser::enterNavigatesToWhatIsTyped_data()
{
    QTest::addColumn<QString>("typed");
    QTest::newRow("a host") << u"example.org"_s;
    QTest::newRow("nothing is trimmed") << u"  example.org "_s;
    QTest::newRow("nothing") << QString();
}

void TestBrowser::enterNavigatesToWhatIsTyped()
{
    QFETCH(QString, typed);
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    QTest::keyClicks(desk.form->Text1, typed);
    QTest::keyClick(desk.form->Text1, Qt::Key_Return);
    QCOMPARE(desk.browser->takeCalls(), QStringList(u"Navigate = "_s + typed));
    QTest::keyClick(desk.form->Text1, Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(desk.browser->takeCalls(), QStringList(u"Navigate = "_s + typed));
}

void TestBrowser::otherKeysAreLeftToTheBox()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    QTest::keyClicks(desk.form->Text1, u"a b"_s);
    QTest::keyClick(desk.form->Text1, Qt::Key_Backspace);
    QCOMPARE(desk.form->Text1->text(), u"a "_s);
    QCOMPARE(desk.browser->takeCalls(), QStringList());
}

void TestBrowser::aRefusedNavigationIsAnError()
{
    const Desk desk;
    desk.browser->failure = error::InvalidProcedureCall;
    QVERIFY_THROWS_EXCEPTION(RuntimeError, desk.form->Text1_KeyPress(13));
}

void TestBrowser::theStatusIsShownAsItComes()
{
    const Desk desk;
    Q_EMIT desk.browser->StatusTextChange(u"<b>Opening</b> page & more"_s);
    QCOMPARE(desk.form->panel1->text(), u"<b>Opening</b> page & more"_s);
    QCOMPARE(desk.form->panel1->textFormat(), Qt::PlainText);
    Q_EMIT desk.browser->StatusTextChange({});
    QCOMPARE(desk.form->panel1->text(), QString());
}

void TestBrowser::aLongStatusLeavesRoomForTheTime()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    desk.download(1, 1234);
    Q_EMIT desk.browser->StatusTextChange(u"https://example.org/"_s + u"long/"_s.repeated(100));
    QCoreApplication::processEvents();
    const Label *time = desk.form->panel2;
    QVERIFY(desk.form->sb->rect().contains(time->geometry()));
    QVERIFY(time->contentsRect().width() >= time->fontMetrics().horizontalAdvance(time->text()));
}

void TestBrowser::theStartEmptiesTheTime()
{
    const Desk desk;
    desk.download(100, 107);
    setClock(200.5);
    Q_EMIT desk.browser->DownloadBegin();
    QCOMPARE(desk.form->panel2->text(), QString());
    QCOMPARE(desk.form->DownloadStart, 200);
}

void TestBrowser::theTimeIsRoundedTwice_data()
{
    QTest::addColumn<double>("start");
    QTest::addColumn<double>("end");
    QTest::addColumn<int>("seconds");
    QTest::newRow("0.4 s shown as one") << 10.4 << 10.8 << 1;
    QTest::newRow("0.3 s shown as none") << 10.6 << 10.9 << 0;
    QTest::newRow("a half goes to the even number") << 10.5 << 12.5 << 2;
    QTest::newRow("7 s") << 50.0 << 57.2 << 7;
    QTest::newRow("across midnight") << 86390.0 << 5.0 << -86385;
}

void TestBrowser::theTimeIsRoundedTwice()
{
    QFETCH(double, start);
    QFETCH(double, end);
    QFETCH(int, seconds);
    const Desk desk;
    desk.download(start, end);
    QCOMPARE(desk.form->panel2->text(), u"Downloaded in %1 seconds"_s.arg(seconds));
    QCOMPARE(desk.form->DownloadStart, seconds);
}

void TestBrowser::theAddressFollowsThePage_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a page") << u"https://example.org/a?b=c#d"_s << u"https://example.org/a?b=c#d"_s;
    QTest::newRow("the blank page") << u"http:///"_s << QString();
    QTest::newRow("not exactly the blank page") << u"http:///a"_s << u"http:///a"_s;
}

void TestBrowser::theAddressFollowsThePage()
{
    QFETCH(QString, address);
    QFETCH(QString, shown);
    const Desk desk;
    desk.form->Text1->setText(u"something else"_s);
    desk.browser->url = address;
    desk.download(1, 2);
    QCOMPARE(desk.form->Text1->text(), shown);
    QCOMPARE(desk.form->Text1->cursorPosition(), 0);
}

void TestBrowser::theStartsBoxIsLeftAlone()
{
    const Desk desk;
    desk.form->Text1->setText(u"something typed"_s);
    Q_EMIT desk.browser->DownloadBegin();
    Q_EMIT desk.browser->DocumentComplete();
    QCOMPARE(desk.form->Text1->text(), u"something typed"_s);
}

void TestBrowser::theTitleFollowsEachDocument()
{
    const Desk desk;
    desk.browser->name = u"A page"_s;
    QCOMPARE(desk.form->windowTitle(), u"Internet - "_s);
    Q_EMIT desk.browser->DocumentComplete();
    QCOMPARE(desk.form->windowTitle(), u"Internet - A page"_s);
    desk.browser->name.clear();
    Q_EMIT desk.browser->DocumentComplete();
    QCOMPARE(desk.form->windowTitle(), u"Internet - "_s);
}

void TestBrowser::theLayoutRule()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    for (const QSize size : {QSize(800, 600), QSize(600, 700)}) {
        desk.form->resize(size);
        QTRY_COMPARE(desk.form->size(), size);
        desk.form->Form_Resize();
        const int top = desk.form->cb->height();
        const int width = pixels(twips(desk.form->frameGeometry().width()) - 100);
        QCOMPARE(desk.form->web->geometry(), QRect(0, top, width, desk.form->sb->y() - top));
    }
}

void TestBrowser::theAddressBoxGrowsWithTheWindow()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    const int before = desk.form->Text1->width();
    const int added = 300;
    desk.form->resize(desk.form->width() + added, desk.form->height());
    QTRY_VERIFY(desk.form->Text1->width() >= before + added - 1);
}

void TestBrowser::aMinimisedWindowMovesThePageAlone()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    desk.form->showMinimized();
    QTRY_VERIFY(desk.form->isMinimized());
    desk.form->web->setGeometry(40, 50, 60, 70);
    desk.form->Form_Resize();
    QCOMPARE(desk.form->web->geometry(), QRect(0, desk.form->cb->height(), 60, 70));
}

void TestBrowser::aHigherBarPutsThePageBelowIt()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    desk.form->cb->setFixedHeight(desk.form->cb->height() + 40);
    const QSize outer = desk.form->frameGeometry().size();
    const int top = desk.form->cb->height();
    desk.form->cb_HeightChanged();
    QCOMPARE(desk.form->web->geometry(), QRect(0, top, outer.width(), outer.height() - top));
    QVERIFY(QMetaObject::invokeMethod(desk.form->cb, "HeightChanged", Q_ARG(float, 100.0F)));
    QCOMPARE(desk.form->web->geometry(), QRect(0, top, outer.width(), outer.height() - top));
    desk.form->Timer1_Timer();
    QCOMPARE(desk.form->web->width(), pixels(twips(outer.width()) - 100));
}

void TestBrowser::theLayoutIsRepeatedSixTimes()
{
    const Desk desk;
    desk.form->Timer1->stop();
    desk.form->Form_Resize();
    QVERIFY(desk.form->Timer1->isActive());
    for (int tick = 1; tick <= 5; ++tick) {
        desk.form->Timer1_Timer();
        QCOMPARE(int{desk.form->ResizeTicks.value()}, tick);
        QVERIFY(desk.form->Timer1->isActive());
    }
    desk.form->web->resize(1, 1);
    desk.form->Timer1_Timer();
    QVERIFY(desk.form->web->width() > 1);
    QCOMPARE(int{desk.form->ResizeTicks.value()}, 0);
    QVERIFY(!desk.form->Timer1->isActive());
}

void TestBrowser::aResizeDoesNotStartTheCountAnew()
{
    const Desk desk;
    desk.form->Timer1_Timer();
    desk.form->Timer1_Timer();
    desk.form->Form_Resize();
    QCOMPARE(int{desk.form->ResizeTicks.value()}, 2);
    QVERIFY(desk.form->Timer1->isActive());
}

void TestBrowser::theKeysForTheAddress_data()
{
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifier>("modifier");
    QTest::newRow("Ctrl+L") << Qt::Key_L << Qt::ControlModifier;
    QTest::newRow("F6") << Qt::Key_F6 << Qt::NoModifier;
}

void TestBrowser::theKeysForTheAddress()
{
    QFETCH(Qt::Key, key);
    QFETCH(Qt::KeyboardModifier, modifier);
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    desk.form->Text1->setText(u"example.org"_s);
    desk.form->Command1[0]->setFocus();
    QTest::keyClick(desk.form.get(), key, modifier);
    QVERIFY(desk.form->Text1->hasFocus());
    QCOMPARE(desk.form->Text1->selectedText(), u"example.org"_s);
}

void TestBrowser::theTabOrder()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    desk.form->Command1[0]->setFocus();
    QCOMPARE(tabbedThrough(9),
             QStringList({u"Command1_0"_s, u"Command1_1"_s, u"Command1_2"_s, u"Command1_3"_s, u"Command1_4"_s,
                          u"Command1_5"_s, u"Command1_6"_s, u"Text1"_s, u"web"_s, u"Command1_0"_s}));
}

void TestBrowser::closingTheWindowTakesTheBrowserWithIt()
{
    const Desk desk;
    QVERIFY(showActive(*desk.form));
    QVERIFY(closingTakes(*desk.form, desk.browser));
    QVERIFY(!desk.form->Timer1->isActive());
}

QTEST_MAIN(TestBrowser)
#include "TestBrowser.moc"
