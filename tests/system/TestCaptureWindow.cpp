#include <memory>

#include <QCheckBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "system/frmCapture.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeScreenCapture.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

/// The tool on its fakes, loaded, and the hands of its user.
class Desk
{
public:
    Desk()
    {
        auto capture = std::make_unique<FakeScreenCapture>();
        auto chooser = std::make_unique<FakeCommonDialog>();
        control = capture.get();
        dialog = chooser.get();
        form = std::make_unique<frmCapture>(std::move(capture), std::move(chooser));
        loadCalls = control->takeCalls();
    }

    QStringList press(int index) const
    {
        control->takeCalls();
        form->com[index]->click();
        return control->takeCalls();
    }

    QStringList browse() const
    {
        control->takeCalls();
        form->Command1->click();
        return control->takeCalls();
    }

    ScriptedPrompts prompts;
    FakeScreenCapture *control = nullptr;
    FakeCommonDialog *dialog = nullptr;
    std::unique_ptr<frmCapture> form;
    QStringList loadCalls;
};

constexpr int now = 0;
constexpr int later = 1;

} // namespace

/// "Screen Capture" on a scripted control.
class TestCaptureWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow()
    {
        const Desk desk;
        QCOMPARE(desk.form->objectName(), u"frmCapture"_s);
        QCOMPARE(desk.form->windowTitle(), u"Screen Capture"_s);
        QVERIFY(desk.form->isWindow());
        QCOMPARE(desk.form->Command1->font().family(), u"MS Sans Serif"_s);
    }

    void captions_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::newRow("Label3") << u"Save Picture to :"_s;
        QTest::newRow("FileNameText") << u"c:\\ScreenCaptured.bmp"_s;
        QTest::newRow("Command1") << u"Browse"_s;
        QTest::newRow("Label1") << u" Capture after :"_s;
        QTest::newRow("TimeDelayText") << u"1"_s;
        QTest::newRow("Label2") << u"Sec."_s;
        QTest::newRow("Check1") << u"Show screen preview"_s;
        QTest::newRow("com_0") << u"Capture now"_s;
        QTest::newRow("com_1") << u"Capture later"_s;
    }
    void captions()
    {
        const Desk desk;
        QTEST(captionOf(*desk.form, QString::fromLatin1(QTest::currentDataTag())), "caption");
    }

    void boxesAreNamedByTheirLabels()
    {
        const Desk desk;
        QCOMPARE(buddyOf(*desk.form, u"Label3"_s), u"FileNameText"_s);
        QCOMPARE(buddyOf(*desk.form, u"Label1"_s), u"TimeDelayText"_s);
    }

    void tabFollowsTheEye()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        desk.form->FileNameText->setFocus();
        const QStringList order{u"FileNameText"_s, u"Command1"_s, u"TimeDelayText"_s,
                                u"Check1"_s,       u"com_0"_s,    u"com_1"_s};
        QCOMPARE(tabbedThrough(6), order + QStringList{u"FileNameText"_s});
    }

    void loadHandsOverTheFirstTexts()
    {
        const Desk desk;
        QVERIFY(desk.form->Check1->isChecked());
        QCOMPARE(desk.loadCalls,
                 QStringList({u"Preview = True"_s, u"Delay = 1"_s, u"File = c:\\ScreenCaptured.bmp"_s}));
        QCOMPARE(desk.dialog->FileName, u"*.bmp"_s);
    }

    void thePreviewFollowsTheBox()
    {
        const Desk desk;
        desk.form->Check1->click();
        desk.form->Check1->click();
        QCOMPARE(desk.control->takeCalls(), QStringList({u"Preview = False"_s, u"Preview = True"_s}));
    }

    void theDelayFollowsEveryEdit_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<QString>("delay");
        QTest::newRow("fraction") << u"2.5"_s << u"2.5"_s;
        QTest::newRow("leading number") << u"2.5s"_s << u"2.5"_s;
        QTest::newRow("no number") << u"soon"_s << u"0"_s;
        QTest::newRow("empty") << QString() << u"0"_s;
        QTest::newRow("negative") << u"-3"_s << u"-3"_s;
        QTest::newRow("comma") << u"2,5"_s << u"2"_s;
    }
    void theDelayFollowsEveryEdit()
    {
        QFETCH(QString, text);
        QFETCH(QString, delay);
        const Desk desk;
        desk.form->TimeDelayText->setText(text);
        QCOMPARE(desk.control->takeCalls(), QStringList{u"Delay = "_s + delay});
    }

    void aDelayBeyondEveryNumberEndsTheProgram()
    {
        Desk desk;
        const ProgramEndSpy end;
        desk.prompts.expectError(error::Overflow);
        desk.form->TimeDelayText->setText(u"1e999"_s);
        QVERIFY(desk.prompts.allShown());
        QCOMPARE(end.count(), 1);
    }

    void theFileFollowsEveryEditUntrimmed()
    {
        const Desk desk;
        desk.form->FileNameText->setText(u" c:\\a.bmp  "_s);
        QCOMPARE(desk.control->takeCalls(), QStringList{u"File =  c:\\a.bmp  "_s});
    }

    void browseTakesTheChosenFile()
    {
        const Desk desk;
        desk.dialog->choose(u"c:\\pictures\\desk.bmp"_s);
        QCOMPARE(desk.browse(), QStringList{u"File = c:\\pictures\\desk.bmp"_s});
        QCOMPARE(desk.dialog->shown, QStringList{u"Save As *.bmp"_s});
        QCOMPARE(desk.dialog->lastOwner, desk.form.get());
        QCOMPARE(desk.form->FileNameText->text(), u"c:\\pictures\\desk.bmp"_s);
        QCOMPARE(desk.dialog->FileName, u"*.bmp"_s);
    }

    void aCancelledBrowseKeepsTheFile()
    {
        const Desk desk;
        desk.dialog->choose(u"c:\\pictures\\desk.bmp"_s);
        desk.browse();
        desk.dialog->cancel();
        QCOMPARE(desk.browse(), QStringList());
        QCOMPARE(desk.form->FileNameText->text(), u"c:\\pictures\\desk.bmp"_s);
        QCOMPARE(desk.dialog->FileName, u"*.bmp"_s);
    }

    void captureNowIgnoresTheDelayAndLeavesIt()
    {
        const Desk desk;
        desk.form->TimeDelayText->setText(u"7"_s);
        QCOMPARE(desk.press(now), QStringList({u"Delay = 7"_s, u"Delay = 0"_s, u"Capture = True"_s}));
        QCOMPARE(desk.form->TimeDelayText->text(), u"7"_s);
    }

    void captureLaterWaitsForTheLeadingNumber()
    {
        const Desk desk;
        desk.form->TimeDelayText->setText(u"2.5s"_s);
        QCOMPARE(desk.press(later), QStringList({u"Delay = 2.5"_s, u"Capture = True"_s}));
    }

    void afterCaptureNowCaptureLaterWaitsAgain()
    {
        const Desk desk;
        desk.press(now);
        QCOMPARE(desk.press(later), QStringList({u"Delay = 1"_s, u"Capture = True"_s}));
    }

    void aBlankFileNameIsRefused_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("index");
        QTest::newRow("empty, now") << QString() << now;
        QTest::newRow("blanks, now") << u"   "_s << now;
        QTest::newRow("empty, later") << QString() << later;
        QTest::newRow("blanks, later") << u"   "_s << later;
    }
    void aBlankFileNameIsRefused()
    {
        QFETCH(QString, text);
        QFETCH(int, index);
        Desk desk;
        desk.form->FileNameText->setText(text);
        desk.prompts.expect(u"File name can not be blank !!"_s, u"Vandrel"_s)
            .buttons(Buttons::OkOnly)
            .icon(BoxIcon::None);
        const QStringList calls = desk.press(index);
        QVERIFY(desk.prompts.allShown());
        QVERIFY2(!calls.contains(u"Capture = True"_s), qPrintable(calls.join(u", ")));
        QCOMPARE(calls.last(), index == now ? u"Delay = 0"_s : u"Delay = 1"_s);
    }

    void aNameWithBlanksAroundIsHandedOverAsItIs()
    {
        const Desk desk;
        desk.form->FileNameText->setText(u"  x"_s);
        QCOMPARE(desk.press(later).last(), u"Capture = True"_s);
        QCOMPARE(desk.prompts.shown(), 0);
    }

    void closingTheWindowTakesTheControlWithIt()
    {
        const Desk desk;
        desk.form->show();
        QVERIFY(closingTakes(*desk.form, desk.control));
    }

    void aWindowClosedBehindTheDialogIsLeftAlone()
    {
        const Desk desk;
        desk.form->show();
        desk.dialog->choose(u"c:\\late.bmp"_s);
        // The dialog goes with its window; what shows it must outlive the call.
        std::unique_ptr<CommonDialog> kept;
        desk.dialog->meanwhile = [&] {
            kept = std::move(desk.form->CommonDialog1);
            desk.form->close();
        };
        desk.form->Command1->click();
        QCOMPARE(desk.form->FileNameText->text(), u"c:\\ScreenCaptured.bmp"_s);
    }
};

QTEST_MAIN(TestCaptureWindow)
#include "TestCaptureWindow.moc"
