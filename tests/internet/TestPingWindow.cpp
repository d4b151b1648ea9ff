#include <algorithm>
#include <memory>

#include <QApplication>
#include <QDeadlineTimer>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QTest>
#include <QTimer>

#include "controls/ListBox.h"
#include "controls/TextBox.h"
#include "internet/frmPing.h"
#include "tests/support/FakePing.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The ping tool on a scripted control.
class TestPingWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void captions_data();
    void captions();
    void initialTexts();
    void labelsAreBuddiesOfTheirBoxes_data();
    void labelsAreBuddiesOfTheirBoxes();
    void accessibleNames();
    void resultsAreReadOnly();
    void theTabOrderFollowsTheEye();
    void theWindowFitsItsScreenAndCanBeResized();
    void loadAssignsNothing();

    void typingTheHostAssignsAtEveryKeystroke();
    void typingTheDataAssignsAtEveryKeystroke();
    void typingTheTimeOutAssignsAtEveryKeystroke();
    void aTimeOutThatIsNoNumberEndsTheProgram_data();
    void aTimeOutThatIsNoNumberEndsTheProgram();
    void aTimeOutBeyondSixteenBitsEndsTheProgram();
    void longDataIsNotCut();
    void theNotesOfThePrefixAssignNothing();

    void aPingAssignsInOrder();
    void theHostLosesItsTrailingBlanksAlone();
    void theButtonIsDisabledWhileItPings();
    void aReplyReplacesTheLogAndFillsTheResults();
    void aFailedPingIsCancelledAndNothingElse();
    void afterAFailureOnlyStopEnablesTheButton();
    void theFocusReturnsToTheButton();
    void afterAFailureTheKeyboardIsAtStop();
    void stopAssignsAndEnablesBoth();
    void stopWithoutAPingInProgress();

    void aScanTriesEveryAddressInOrder();
    void theEmptyStartIsNought();
    void aScanAssignsInOrder();
    void anAnswerIsListedAndShown();
    void theLogOfAnAnswer();
    void theLogOfAFailure();
    void aFailureIsCancelledAndTheNextHostAssigned();
    void anEchoThatDiffersIsNotListed_data();
    void anEchoThatDiffersIsNotListed();
    void fromGreaterThanTo();
    void anEmptyRangeClearsTheLog();
    void theEndsAreRounded_data();
    void theEndsAreRounded();
    void anEndBeyondSixteenBitsEndsTheProgram_data();
    void anEndBeyondSixteenBitsEndsTheProgram();
    void negativeParts();
    void toTheLargestPartOverflowsAfterIt();
    void afterAFailureTheNextHostOverflowsToo();
    void bothButtonsAreDisabledDuringAScan();
    void stopEndsTheScanBeforeTheNextAddress();
    void stopEnablesBothButtonsWithinTheScan();
    void thePrefixIsReadAnewAtEveryAddress();
    void thePrefixOfTheNextHostIsReadAnew();
    void aScanYieldsOncePerAddress();
    void whatAScanShowsIsPaintedDuringTheNextWait();
    void aScanThatNeverWaitsIsPaintedAllTheSame();
    void activeAddressesStayAcrossScans();
    void theLogStartsAnewWithEachScan();
    void theFocusReturnsToScan();
    void whatAnAssignmentRaisesEndsTheProgram();

    void closingTheWindowTakesTheControlWithIt();
    void closingTheWindowEndsAScan();
    void aWindowDestroyedWhileItPingsIsLeftAlone();
};

namespace {

/// Counts how often a widget is painted.
class Paints final : public QObject
{
public:
    explicit Paints(QWidget &widget) { widget.installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

    int count = 0;
};

// The tool on its fake, and the hands of its user.
class Bench
{
public:
    Bench()
    {
        auto fake = std::make_unique<FakePing>();
        control = fake.get();
        form = std::make_unique<frmPing>(std::move(fake));
    }

    bool show() const
    {
        form->show();
        form->activateWindow();
        return QTest::qWaitForWindowActive(form.get());
    }

    void fail(const QString &status) const
    {
        control->answer = [status](const QString &, const QString &) {
            return FakePing::Outcome{status, true, {}, 0, 0};
        };
    }

    QStringList ping() const
    {
        control->takeCalls();
        form->PingCommand->click();
        return control->takeCalls();
    }

    // Scans that range with the prefix "10.0.0.".
    QStringList scan(const QString &from, const QString &to) const
    {
        form->IP->setText(u"10.0.0."_s);
        form->IPfrom->setText(from);
        form->IPto->setText(to);
        control->takeCalls();
        form->ScanCommand->click();
        return control->takeCalls();
    }

    // The enabled ones of the three buttons.
    QStringList enabled() const
    {
        QStringList names;
        for (const QPushButton *button : {form->PingCommand, form->StopCommand, form->ScanCommand}) {
            if (button->isEnabled())
                names.append(button->objectName());
        }
        return names;
    }

    QStringList results() const
    {
        return {form->DataSizeText->text(), form->EchoDataText->text(), form->RoundTripTimeText->text()};
    }

    QStringList active() const
    {
        QStringList rows;
        for (int row = 0; row < form->UserList->ListCount(); ++row)
            rows.append(form->UserList->List(row));
        return rows;
    }

    QString log() const { return form->StatusText->text(); }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    FakePing *control = nullptr;
    std::unique_ptr<frmPing> form;
};

const QStringList allThree{u"PingCommand"_s, u"StopCommand"_s, u"ScanCommand"_s};

// The hosts pinged, of what was assigned.
QStringList hostsPinged(const QStringList &calls)
{
    QStringList hosts;
    QString host;
    for (const QString &call : calls) {
        if (call.startsWith(u"Host = "))
            host = call.mid(7);
        else if (call == u"Ping = True")
            hosts.append(host);
    }
    return hosts;
}

} // namespace

void TestPingWindow::theWindow()
{
    const Bench bench;
    QCOMPARE(bench.form->objectName(), u"frmPing"_s);
    QCOMPARE(bench.form->windowTitle(), u"Ping"_s);
    QVERIFY(bench.form->isWindow());
    QCOMPARE(bench.form->PingCommand->font().family(), u"MS Sans Serif"_s);
}

void TestPingWindow::captions_data()
{
    QTest::addColumn<QString>("caption");
    QTest::newRow("Label1") << u" Host IP Address :"_s;
    QTest::newRow("PingCommand") << u"Pinging Host"_s;
    QTest::newRow("StopCommand") << u"Stop"_s;
    QTest::newRow("Label6") << u"   Ping   Packet   Parameter"_s;
    QTest::newRow("Label4") << u" Pinging  Data   "_s;
    QTest::newRow("Label5") << u" Time  Out  "_s;
    QTest::newRow("Label3") << u" Data Size"_s;
    QTest::newRow("Label7") << u" Echo Data"_s;
    QTest::newRow("Label2") << u" Round Trip Time"_s;
    QTest::newRow("Label8") << u" Data Size, Echo Data, Round Trip Time are READ ONLY"_s;
    QTest::newRow("Label9") << u"  Pinging Status "_s;
    QTest::newRow("Label13") << u" Scanning "_s;
    QTest::newRow("Label10") << u"From  Address:"_s;
    QTest::newRow("Label11") << u"To  Address:"_s;
    QTest::newRow("ScanCommand") << u"Scan"_s;
    QTest::newRow("Label12") << u"Active IPs"_s;
}

void TestPingWindow::captions()
{
    QFETCH(QString, caption);
    const Bench bench;
    const auto *widget = bench.form->findChild<QWidget *>(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(widget);
    QCOMPARE(widget->property("text").toString(), caption);
}

void TestPingWindow::initialTexts()
{
    const Bench bench;
    QStringList texts;
    for (const QLineEdit *box : bench.form->findChildren<QLineEdit *>()) {
        if (!box->text().isEmpty())
            texts.append(box->objectName() + u": "_s + box->text());
    }
    std::sort(texts.begin(), texts.end());
    QCOMPARE(texts,
             QStringList(
                 {u"IP: 202.159.32."_s, u"IPto: 159"_s, u"Text1: 202.159.32."_s, u"Text2: 202.159.32."_s}));
    QCOMPARE(bench.log(), QString());
    QCOMPARE(bench.active(), QStringList());
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::labelsAreBuddiesOfTheirBoxes_data()
{
    QTest::addColumn<QString>("box");
    QTest::newRow("Label1") << u"HostIP"_s;
    QTest::newRow("Label4") << u"PingingDataText"_s;
    QTest::newRow("Label5") << u"TimeOutText"_s;
    QTest::newRow("Label3") << u"DataSizeText"_s;
    QTest::newRow("Label7") << u"EchoDataText"_s;
    QTest::newRow("Label2") << u"RoundTripTimeText"_s;
    QTest::newRow("Label9") << u"StatusText"_s;
    QTest::newRow("Label10") << u"IPfrom"_s;
    QTest::newRow("Label11") << u"IPto"_s;
    QTest::newRow("Label12") << u"UserList"_s;
}

void TestPingWindow::labelsAreBuddiesOfTheirBoxes()
{
    QFETCH(QString, box);
    const Bench bench;
    const auto *label = bench.form->findChild<QLabel *>(QString::fromLatin1(QTest::currentDataTag()));
    QVERIFY(label->buddy());
    QCOMPARE(label->buddy()->objectName(), box);
}

void TestPingWindow::accessibleNames()
{
    const Bench bench;
    QCOMPARE(bench.form->IP->accessibleName(), u"Address prefix"_s);
    QCOMPARE(bench.form->LastIPScan->accessibleName(), u"Last address tried"_s);
    QCOMPARE(bench.form->UserList->accessibleName(), u"Active IPs"_s);
}

void TestPingWindow::resultsAreReadOnly()
{
    const Bench bench;
    for (const QLineEdit *box : {bench.form->DataSizeText, bench.form->EchoDataText,
                                 bench.form->RoundTripTimeText, bench.form->LastIPScan})
        QVERIFY2(box->isReadOnly(), qPrintable(box->objectName()));
    QVERIFY(bench.form->StatusText->isReadOnly());
}

void TestPingWindow::theTabOrderFollowsTheEye()
{
    const Bench bench;
    QVERIFY(bench.show());
    const QStringList expected{u"HostIP"_s,      u"PingCommand"_s,  u"StopCommand"_s,  u"PingingDataText"_s,
                               u"TimeOutText"_s, u"DataSizeText"_s, u"EchoDataText"_s, u"RoundTripTimeText"_s,
                               u"IP"_s,          u"IPfrom"_s,       u"IPto"_s,         u"LastIPScan"_s,
                               u"ScanCommand"_s, u"UserList"_s,     u"StatusText"_s};
    QStringList visited;
    while (visited.size() < expected.size()) {
        visited.append(QApplication::focusWidget()->objectName());
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited, expected);
    QCOMPARE(QApplication::focusWidget()->objectName(), u"HostIP"_s);
}

void TestPingWindow::theWindowFitsItsScreenAndCanBeResized()
{
    const Bench bench;
    QVERIFY(bench.show());
    const QSize available = bench.form->screen()->availableSize();
    QVERIFY(bench.form->width() <= available.width());
    QVERIFY(bench.form->height() <= available.height());
    const int before = bench.form->StatusText->height();
    bench.form->resize(bench.form->size() + QSize(100, 200));
    QTRY_VERIFY(bench.form->StatusText->height() > before);
}

void TestPingWindow::loadAssignsNothing()
{
    const Bench bench;
    QCOMPARE(bench.control->takeCalls(), QStringList());
}

void TestPingWindow::typingTheHostAssignsAtEveryKeystroke()
{
    const Bench bench;
    QTest::keyClicks(bench.form->HostIP, u" a "_s);
    QTest::keyClick(bench.form->HostIP, Qt::Key_Backspace);
    QCOMPARE(bench.control->takeCalls(),
             QStringList({u"Host =  "_s, u"Host =  a"_s, u"Host =  a "_s, u"Host =  a"_s}));
}

void TestPingWindow::typingTheDataAssignsAtEveryKeystroke()
{
    const Bench bench;
    QTest::keyClicks(bench.form->PingingDataText, u"x "_s);
    QCOMPARE(bench.control->takeCalls(), QStringList({u"DataToSend = x"_s, u"DataToSend = x "_s}));
}

void TestPingWindow::typingTheTimeOutAssignsAtEveryKeystroke()
{
    const Bench bench;
    QTest::keyClicks(bench.form->TimeOutText, u"250"_s);
    QCOMPARE(bench.control->takeCalls(),
             QStringList({u"TimeOut = 2"_s, u"TimeOut = 25"_s, u"TimeOut = 250"_s}));
    bench.form->TimeOutText->setText(u"99.5"_s);
    QCOMPARE(bench.control->takeCalls(), QStringList{u"TimeOut = 100"_s});
}

void TestPingWindow::aTimeOutThatIsNoNumberEndsTheProgram_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("empty") << QString();
    QTest::newRow("a word") << u"soon"_s;
    QTest::newRow("a unit") << u"5 ms"_s;
}

void TestPingWindow::aTimeOutThatIsNoNumberEndsTheProgram()
{
    QFETCH(QString, text);
    Bench bench;
    bench.form->TimeOutText->setText(u"5"_s);
    bench.control->takeCalls();
    bench.prompts.expectError(error::TypeMismatch);
    bench.form->TimeOutText->setText(text);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
    QCOMPARE(bench.control->takeCalls(), QStringList());
}

void TestPingWindow::aTimeOutBeyondSixteenBitsEndsTheProgram()
{
    Bench bench;
    bench.form->TimeOutText->setText(u"32767"_s);
    QCOMPARE(bench.control->takeCalls(), QStringList{u"TimeOut = 32767"_s});
    bench.prompts.expectError(error::Overflow);
    bench.form->TimeOutText->setText(u"32768"_s);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
}

void TestPingWindow::longDataIsNotCut()
{
    const Bench bench;
    const QString data = u"0123456789"_s.repeated(7000);
    bench.form->PingingDataText->setText(data);
    QCOMPARE(bench.control->takeCalls(), QStringList{u"DataToSend = "_s + data});
}

void TestPingWindow::theNotesOfThePrefixAssignNothing()
{
    const Bench bench;
    bench.form->Text1->setText(u"10."_s);
    bench.form->Text2->setText(u"11."_s);
    QCOMPARE(bench.control->takeCalls(), QStringList());
    QCOMPARE(bench.form->IP->text(), u"202.159.32."_s);
}

void TestPingWindow::aPingAssignsInOrder()
{
    const Bench bench;
    bench.form->HostIP->setText(u"host"_s);
    QCOMPARE(bench.ping(), QStringList({u"Host = host"_s, u"Ping = True"_s}));
}

void TestPingWindow::theHostLosesItsTrailingBlanksAlone()
{
    const Bench bench;
    bench.form->HostIP->setText(u"  a host  "_s);
    QCOMPARE(bench.ping().first(), u"Host =   a host"_s);
    QCOMPARE(bench.form->HostIP->text(), u"  a host  "_s);
}

void TestPingWindow::theButtonIsDisabledWhileItPings()
{
    const Bench bench;
    QStringList meanwhile{u"unset"_s};
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Ping = True")
            meanwhile = bench.enabled();
    };
    bench.ping();
    QCOMPARE(meanwhile, QStringList({u"StopCommand"_s, u"ScanCommand"_s}));
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::aReplyReplacesTheLogAndFillsTheResults()
{
    const Bench bench;
    bench.form->StatusText->setText(u"an earlier scan"_s);
    bench.control->answer = [](const QString &, const QString &) {
        return FakePing::Outcome{u"A reply"_s, false, u"Echo"_s, 4, 12};
    };
    bench.ping();
    QCOMPARE(bench.log(), u"A reply"_s);
    QCOMPARE(bench.results(), QStringList({u" 4"_s, u"Echo"_s, u" 12"_s}));
    QCOMPARE(bench.active(), QStringList());
}

void TestPingWindow::aFailedPingIsCancelledAndNothingElse()
{
    const Bench bench;
    bench.ping();
    const QString log = bench.log();
    const QStringList results = bench.results();
    bench.fail(u"No reply"_s);
    QCOMPARE(bench.ping(), QStringList({u"Host = "_s, u"Ping = True"_s, u"Ping = False"_s}));
    QCOMPARE(bench.log(), log);
    QCOMPARE(bench.results(), results);
    QCOMPARE(bench.prompts.shown(), 0);
    QCOMPARE(bench.enabled(), QStringList({u"StopCommand"_s, u"ScanCommand"_s}));
}

void TestPingWindow::afterAFailureOnlyStopEnablesTheButton()
{
    const Bench bench;
    bench.fail(u"No reply"_s);
    bench.ping();
    bench.form->HostIP->setText(u"another"_s);
    QVERIFY(!bench.form->PingCommand->isEnabled());
    QCOMPARE(bench.ping(), QStringList());
    bench.form->StopCommand->click();
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::theFocusReturnsToTheButton()
{
    const Bench bench;
    QVERIFY(bench.show());
    bench.form->PingCommand->setFocus();
    QTest::keyClick(bench.form->PingCommand, Qt::Key_Return);
    QVERIFY(bench.form->PingCommand->hasFocus());
}

void TestPingWindow::afterAFailureTheKeyboardIsAtStop()
{
    const Bench bench;
    QVERIFY(bench.show());
    bench.fail(u"No reply"_s);
    bench.form->PingCommand->setFocus();
    QTest::keyClick(bench.form->PingCommand, Qt::Key_Return);
    QVERIFY(bench.form->StopCommand->hasFocus());
    QTest::keyClick(bench.form->StopCommand, Qt::Key_Return);
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::stopAssignsAndEnablesBoth()
{
    const Bench bench;
    bench.form->ScanCommand->setEnabled(false);
    bench.form->PingCommand->setEnabled(false);
    QStringList meanwhile{u"unset"_s};
    bench.control->onCall = [&](const QString &) { meanwhile = bench.enabled(); };
    bench.form->StopCommand->click();
    QCOMPARE(bench.control->takeCalls(), QStringList{u"Ping = False"_s});
    QCOMPARE(meanwhile, QStringList{u"StopCommand"_s});
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::stopWithoutAPingInProgress()
{
    const Bench bench;
    bench.form->StopCommand->click();
    QCOMPARE(bench.control->takeCalls(), QStringList{u"Ping = False"_s});
    QCOMPARE(bench.enabled(), allThree);
    QCOMPARE(bench.log(), QString());
}

void TestPingWindow::aScanTriesEveryAddressInOrder()
{
    const Bench bench;
    QCOMPARE(hostsPinged(bench.scan(u"9"_s, u"12"_s)),
             QStringList({u"10.0.0. 9"_s, u"10.0.0. 10"_s, u"10.0.0. 11"_s, u"10.0.0. 12"_s}));
}

void TestPingWindow::theEmptyStartIsNought()
{
    const Bench bench;
    bench.form->ScanCommand->click();
    const QStringList hosts = hostsPinged(bench.control->takeCalls());
    QCOMPARE(hosts.size(), 160);
    QCOMPARE(hosts.first(), u"202.159.32. 0"_s);
    QCOMPARE(hosts.at(5), u"202.159.32. 5"_s);
    QCOMPARE(hosts.last(), u"202.159.32. 159"_s);
    QCOMPARE(bench.form->LastIPScan->text(), u" 159"_s);
    QCOMPARE(bench.form->PingingDataText->text(), u" 159"_s);
}

void TestPingWindow::aScanAssignsInOrder()
{
    const Bench bench;
    const QStringList expected{u"Host = 10.0.0. 5"_s, u"DataToSend =  5"_s, u"DataToSend =  5"_s,
                               u"Ping = True"_s};
    QCOMPARE(bench.scan(u"5"_s, u"5"_s), expected);
    // The data field shows it already: it does not change, and assigns nothing.
    QCOMPARE(bench.scan(u"5"_s, u"5"_s),
             QStringList({u"Host = 10.0.0. 5"_s, u"DataToSend =  5"_s, u"Ping = True"_s}));
}

void TestPingWindow::anAnswerIsListedAndShown()
{
    const Bench bench;
    bench.control->answer = [](const QString &, const QString &data) {
        return FakePing::Outcome{u"A reply"_s, false, data, 2, 3};
    };
    bench.scan(u"7"_s, u"8"_s);
    QCOMPARE(bench.active(), QStringList({u"10.0.0. 7"_s, u"10.0.0. 8"_s}));
    QCOMPARE(bench.results(), QStringList({u" 2"_s, u" 8"_s, u" 3"_s}));
}

void TestPingWindow::theLogOfAnAnswer()
{
    const Bench bench;
    bench.control->answer = [](const QString &, const QString &data) {
        return FakePing::Outcome{u"A reply"_s, false, data, 2, 3};
    };
    bench.scan(u"5"_s, u"5"_s);
    QCOMPARE(bench.log(), u"Pinging to : 10.0.0. 5\r\nA reply\r\nA reply\r\n"_s);
}

void TestPingWindow::theLogOfAFailure()
{
    const Bench bench;
    bench.fail(u"No reply"_s);
    bench.scan(u"5"_s, u"6"_s);
    QCOMPARE(bench.log(),
             u"Pinging to : 10.0.0. 5\r\nNo reply\r\nNo reply\r\n"
             "Pinging to : 10.0.0. 6\r\nNo reply\r\nNo reply\r\n"_s);
    QCOMPARE(bench.prompts.shown(), 0);
}

void TestPingWindow::aFailureIsCancelledAndTheNextHostAssigned()
{
    const Bench bench;
    bench.fail(u"No reply"_s);
    QCOMPARE(bench.scan(u"5"_s, u"5"_s),
             QStringList({u"Host = 10.0.0. 5"_s, u"DataToSend =  5"_s, u"DataToSend =  5"_s, u"Ping = True"_s,
                          u"Ping = False"_s, u"Host = 10.0.0. 6"_s}));
    QCOMPARE(bench.active(), QStringList());
    QCOMPARE(bench.results(), QStringList({QString(), QString(), QString()}));
    QCOMPARE(bench.enabled(), allThree);
}

void TestPingWindow::anEchoThatDiffersIsNotListed_data()
{
    QTest::addColumn<QString>("echo");
    QTest::newRow("another text") << u" 6"_s;
    QTest::newRow("without the blank") << u"5"_s;
    QTest::newRow("nothing") << QString();
    QTest::newRow("more") << u" 5 "_s;
}

void TestPingWindow::anEchoThatDiffersIsNotListed()
{
    QFETCH(QString, echo);
    const Bench bench;
    bench.control->answer = [echo](const QString &, const QString &) {
        return FakePing::Outcome{u"A reply"_s, false, echo, 2, 3};
    };
    bench.scan(u"5"_s, u"5"_s);
    QCOMPARE(bench.active(), QStringList());
    QCOMPARE(bench.results(), QStringList({QString(), QString(), QString()}));
    QCOMPARE(bench.log(), u"Pinging to : 10.0.0. 5\r\nA reply\r\n"_s);
}

void TestPingWindow::fromGreaterThanTo()
{
    const Bench bench;
    QCOMPARE(bench.scan(u"6"_s, u"5"_s), QStringList());
    QCOMPARE(bench.log(), QString());
    QCOMPARE(bench.enabled(), allThree);
    QCOMPARE(bench.form->LastIPScan->text(), QString());
}

void TestPingWindow::anEmptyRangeClearsTheLog()
{
    const Bench bench;
    bench.form->StatusText->setText(u"an earlier ping"_s);
    bench.scan(u"6"_s, u"5"_s);
    QCOMPARE(bench.log(), QString());
}

void TestPingWindow::theEndsAreRounded_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::addColumn<QStringList>("hosts");
    QTest::newRow("halves go to the even")
        << u"0.5"_s << u"1.5"_s << QStringList{u"10.0.0. 0"_s, u"10.0.0. 1"_s, u"10.0.0. 2"_s};
    QTest::newRow("up to the first letter")
        << u"3x"_s << u" 4 th"_s << QStringList{u"10.0.0. 3"_s, u"10.0.0. 4"_s};
    QTest::newRow("no number is nought") << u"x"_s << u""_s << QStringList{u"10.0.0. 0"_s};
}

void TestPingWindow::theEndsAreRounded()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    QFETCH(QStringList, hosts);
    const Bench bench;
    QCOMPARE(hostsPinged(bench.scan(from, to)), hosts);
}

void TestPingWindow::anEndBeyondSixteenBitsEndsTheProgram_data()
{
    QTest::addColumn<QString>("from");
    QTest::addColumn<QString>("to");
    QTest::newRow("to") << u"0"_s << u"32768"_s;
    QTest::newRow("from") << u"-32769"_s << u"0"_s;
}

void TestPingWindow::anEndBeyondSixteenBitsEndsTheProgram()
{
    QFETCH(QString, from);
    QFETCH(QString, to);
    Bench bench;
    bench.prompts.expectError(error::Overflow);
    QCOMPARE(bench.scan(from, to), QStringList());
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
}

void TestPingWindow::negativeParts()
{
    const Bench bench;
    QCOMPARE(hostsPinged(bench.scan(u"-2"_s, u"0"_s)),
             QStringList({u"10.0.0.-2"_s, u"10.0.0.-1"_s, u"10.0.0. 0"_s}));
}

void TestPingWindow::toTheLargestPartOverflowsAfterIt()
{
    Bench bench;
    bench.prompts.expectError(error::Overflow);
    const QStringList hosts = hostsPinged(bench.scan(u"32766"_s, u"32767"_s));
    QCOMPARE(hosts, QStringList({u"10.0.0. 32766"_s, u"10.0.0. 32767"_s}));
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
}

void TestPingWindow::afterAFailureTheNextHostOverflowsToo()
{
    Bench bench;
    bench.fail(u"No reply"_s);
    bench.prompts.expectError(error::Overflow);
    QCOMPARE(bench.scan(u"32767"_s, u"32767"_s).last(), u"Ping = False"_s);
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
}

void TestPingWindow::bothButtonsAreDisabledDuringAScan()
{
    const Bench bench;
    QStringList meanwhile;
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Ping = True")
            meanwhile.append(bench.enabled().join(u','));
    };
    bench.scan(u"1"_s, u"2"_s);
    QCOMPARE(meanwhile, QStringList({u"StopCommand"_s, u"StopCommand"_s}));
    QCOMPARE(bench.enabled(), allThree);
}

// The click is queued while the first address is tried; it takes effect before the second is.
void TestPingWindow::stopEndsTheScanBeforeTheNextAddress()
{
    const Bench bench;
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Ping = True")
            QTimer::singleShot(0, bench.form->StopCommand, &QPushButton::click);
    };
    const QStringList calls = bench.scan(u"1"_s, u"9"_s);
    QCOMPARE(hostsPinged(calls), QStringList{u"10.0.0. 1"_s});
    QCOMPARE(calls.last(), u"Ping = False"_s);
    QCOMPARE(bench.log(), u"Pinging to : 10.0.0. 1\r\nReply from 10.0.0. 1\r\nReply from 10.0.0. 1\r\n"_s);
    QCOMPARE(bench.enabled(), allThree);
}

// Stop within an address, as a key that arrives in the middle of it would: the address completes, no other follows.
void TestPingWindow::stopEnablesBothButtonsWithinTheScan()
{
    const Bench bench;
    QStringList within{u"unset"_s};
    bench.control->onCall = [&](const QString &call) {
        if (call != u"Ping = True")
            return;
        bench.control->onCall = nullptr;
        bench.form->StopCommand->click();
        within = bench.enabled();
    };
    QCOMPARE(hostsPinged(bench.scan(u"1"_s, u"9"_s)), QStringList{u"10.0.0. 1"_s});
    QCOMPARE(within, allThree);
    QCOMPARE(bench.active(), QStringList{u"10.0.0. 1"_s});
}

void TestPingWindow::thePrefixIsReadAnewAtEveryAddress()
{
    const Bench bench;
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Host = 10.0.0. 2")
            QTimer::singleShot(0, bench.form->IP, [&] { bench.form->IP->setText(u"192.0.2."_s); });
    };
    const QStringList hosts = hostsPinged(bench.scan(u"1"_s, u"4"_s));
    QCOMPARE(hosts, QStringList({u"10.0.0. 1"_s, u"10.0.0. 2"_s, u"192.0.2. 3"_s, u"192.0.2. 4"_s}));
    QCOMPARE(bench.active(), hosts);
}

void TestPingWindow::thePrefixOfTheNextHostIsReadAnew()
{
    const Bench bench;
    bench.fail(u"No reply"_s);
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Ping = False")
            bench.form->IP->setText(u"192.0.2."_s);
    };
    QCOMPARE(bench.scan(u"1"_s, u"1"_s).last(), u"Host = 192.0.2. 2"_s);
}

void TestPingWindow::aScanYieldsOncePerAddress()
{
    const Bench bench;
    int turns = 0;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&turns] { ++turns; });
    timer.start(0);
    QList<int> seen;
    bench.control->onCall = [&](const QString &call) {
        if (call == u"Ping = True")
            seen.append(turns);
    };
    bench.scan(u"1"_s, u"4"_s);
    QCOMPARE(seen, QList<int>({1, 2, 3, 4}));
}

void TestPingWindow::whatAScanShowsIsPaintedDuringTheNextWait()
{
    const Bench bench;
    QVERIFY(bench.show());
    const Paints paints(*bench.form->LastIPScan);
    int painted = 0;
    bench.control->onCall = [&](const QString &call) {
        if (call != u"Ping = True")
            return;
        // As the control does it while it waits.
        const int before = paints.count;
        QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        painted += paints.count > before ? 1 : 0;
    };
    bench.scan(u"1"_s, u"5"_s);
    QVERIFY2(painted >= 4, qPrintable(QString::number(painted)));
}

void TestPingWindow::aScanThatNeverWaitsIsPaintedAllTheSame()
{
    const Bench bench;
    QVERIFY(bench.show());
    const Paints paints(*bench.form->LastIPScan);
    bench.control->onCall = [](const QString &call) {
        // A reply that takes longer than the window may stand still.
        for (const QDeadlineTimer reply(call == u"Ping = True" ? 60 : 0); !reply.hasExpired();) { }
    };
    bench.scan(u"1"_s, u"5"_s);
    QVERIFY2(paints.count >= 3, qPrintable(QString::number(paints.count)));
    const int during = paints.count;
    bench.form->LastIPScan->setText(u"new"_s);
    QTRY_VERIFY(paints.count > during);
}

void TestPingWindow::activeAddressesStayAcrossScans()
{
    const Bench bench;
    bench.scan(u"1"_s, u"1"_s);
    bench.scan(u"1"_s, u"2"_s);
    QCOMPARE(bench.active(), QStringList({u"10.0.0. 1"_s, u"10.0.0. 1"_s, u"10.0.0. 2"_s}));
}

void TestPingWindow::theLogStartsAnewWithEachScan()
{
    const Bench bench;
    bench.scan(u"1"_s, u"1"_s);
    const QString first = bench.log();
    bench.scan(u"1"_s, u"1"_s);
    QCOMPARE(bench.log(), first);
}

void TestPingWindow::theFocusReturnsToScan()
{
    const Bench bench;
    QVERIFY(bench.show());
    bench.form->ScanCommand->setFocus();
    bench.scan(u"1"_s, u"2"_s);
    QVERIFY(bench.form->ScanCommand->hasFocus());
}

void TestPingWindow::whatAnAssignmentRaisesEndsTheProgram()
{
    Bench bench;
    bench.control->onCall = [](const QString &call) {
        if (call == u"Ping = True")
            throw RuntimeError(error::DeviceUnavailable);
    };
    bench.prompts.expectError(error::DeviceUnavailable);
    bench.ping();
    QVERIFY(bench.prompts.allShown());
    QCOMPARE(bench.end.count(), 1);
}

void TestPingWindow::closingTheWindowTakesTheControlWithIt()
{
    const Bench bench;
    QVERIFY(bench.show());
    const QPointer<FakePing> control(bench.control);
    QVERIFY(bench.form->close());
    QVERIFY(control.isNull());
}

void TestPingWindow::closingTheWindowEndsAScan()
{
    const Bench bench;
    QVERIFY(bench.show());
    QStringList hosts;
    bench.control->onCall = [&](const QString &call) {
        if (call.startsWith(u"Host = "))
            hosts.append(call.mid(7));
        if (call == u"Ping = True")
            QTimer::singleShot(0, bench.form.get(), [&] { bench.form->close(); });
    };
    const QPointer<FakePing> control(bench.control);
    bench.form->IPto->setText(u"9"_s);
    bench.form->ScanCommand->click();
    QVERIFY(control.isNull());
    QCOMPARE(hosts, QStringList{u"202.159.32. 0"_s});
}

void TestPingWindow::aWindowDestroyedWhileItPingsIsLeftAlone()
{
    for (const bool scans : {false, true}) {
        Bench bench;
        const QPointer<FakePing> control(bench.control);
        control->onCall = [&bench](const QString &call) {
            if (call == u"Ping = True")
                bench.form.reset();
        };
        (scans ? bench.form->ScanCommand : bench.form->PingCommand)->click();
        QVERIFY(control.isNull());
        QVERIFY(!bench.form);
    }
}

QTEST_MAIN(TestPingWindow)
#include "TestPingWindow.moc"
