#include <memory>

#include <QLabel>
#include <QPushButton>
#include <QTest>

#include "controls/ComboBox.h"
#include "system/frmRes.h"
#include "tests/support/FakeChangeRes.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

/// The tool on a scripted display, loaded, and the hands of its user.
class Desk
{
public:
    Desk(qint32 width = 1920, qint32 height = 1080)
    {
        auto fake = std::make_unique<FakeChangeRes>();
        control = fake.get();
        control->setWidth(width);
        control->setHeight(height);
        control->takeCalls();
        form = std::make_unique<frmRes>(std::move(fake));
        loadCalls = control->takeCalls();
    }

    QStringList change(int index) const
    {
        form->Combo1->setListIndex(index);
        control->takeCalls();
        form->NewSettingCommand->click();
        return control->takeCalls();
    }

    QStringList escape() const
    {
        control->takeCalls();
        QTest::keyClick(form.get(), Qt::Key_Escape);
        return control->takeCalls();
    }

    ScriptedPrompts prompts;
    FakeChangeRes *control = nullptr;
    std::unique_ptr<frmRes> form;
    QStringList loadCalls;
};

QStringList changeTo(const QString &width, const QString &height)
{
    return {u"Width"_s,        u"Height"_s, u"Width = "_s + width, u"Height = "_s + height,
            u"Apply = True"_s, u"Failed"_s};
}

QStringList backTo(const QString &width, const QString &height)
{
    return {u"Width = "_s + width, u"Height = "_s + height, u"Apply = True"_s};
}

} // namespace

/// "Screen resolution control" on a scripted display.
class TestResolutionWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow()
    {
        const Desk desk;
        QCOMPARE(desk.form->objectName(), u"frmRes"_s);
        QCOMPARE(desk.form->windowTitle(), u"Screen resolution control"_s);
        QVERIFY(desk.form->isWindow());
        QCOMPARE(desk.form->driver->font().family(), u"MS Sans Serif"_s);
    }

    void captions_data()
    {
        QTest::addColumn<QString>("caption");
        QTest::newRow("Label1") << u"Your Display information"_s;
        QTest::newRow("Label2") << u"Display Driver"_s;
        QTest::newRow("Label3") << u"Device Description"_s;
        QTest::newRow("Label4") << u"Hardware ID"_s;
        QTest::newRow("Label5") << u"Manufacture type"_s;
        QTest::newRow("Label6") << u"Width"_s;
        QTest::newRow("Label7") << u"Height"_s;
        QTest::newRow("Label8") << u"New resolution"_s;
        QTest::newRow("Label9") << u"Note: Press Esc anytime to return to previous resolution"_s;
        QTest::newRow("NewSettingCommand") << u"Change now"_s;
        QTest::newRow("driver") << u"DisplayDriver"_s;
        QTest::newRow("desc") << u"DeviceDescription"_s;
        QTest::newRow("id") << u"HardwareID"_s;
        QTest::newRow("manufacturer") << u"Manufacturer"_s;
        QTest::newRow("width1") << u"1920"_s;
        QTest::newRow("height1") << u"1080"_s;
    }
    void captions()
    {
        const Desk desk;
        QTEST(captionOf(*desk.form, QString::fromLatin1(QTest::currentDataTag())), "caption");
    }

    void factsAreNamedByTheirLabels()
    {
        const Desk desk;
        const QStringList values{u"driver"_s,       u"desc"_s,   u"id"_s,
                                 u"manufacturer"_s, u"width1"_s, u"height1"_s};
        for (qsizetype i = 0; i < values.size(); ++i)
            QCOMPARE(buddyOf(*desk.form, u"Label%1"_s.arg(i + 2)), values[i]);
        QCOMPARE(buddyOf(*desk.form, u"Label8"_s), u"Combo1"_s);
    }

    void factsArePlainText()
    {
        const Desk desk;
        for (const QLabel *fact :
             {desk.form->driver, desk.form->desc, desk.form->id, desk.form->manufacturer})
            QCOMPARE(fact->textFormat(), Qt::PlainText);
    }

    void theListOffersThreeResolutionsAndChoosesNone()
    {
        const Desk desk;
        const ComboBox *list = desk.form->Combo1;
        QCOMPARE(list->ListCount(), 3);
        QCOMPARE(list->List(0), u"640x480"_s);
        QCOMPARE(list->List(1), u"800x600"_s);
        QCOMPARE(list->List(2), u"1024x768"_s);
        QCOMPARE(list->ListIndex(), -1);
        QVERIFY(!list->isEditable());
    }

    void loadReadsEveryFactOnce()
    {
        const Desk desk;
        QCOMPARE(desk.loadCalls,
                 QStringList({u"Read = True"_s, u"DeviceDescription"_s, u"DisplayDriver"_s, u"HardwareID"_s,
                              u"Manufacturer"_s, u"Height"_s, u"Width"_s}));
        QCOMPARE(desk.form->OldWidth.value(), 0);
        QCOMPARE(desk.form->OldHeight.value(), 0);
    }

    void changeNowAppliesTheChosenResolution_data()
    {
        QTest::addColumn<int>("index");
        QTest::addColumn<QString>("width");
        QTest::addColumn<QString>("height");
        QTest::newRow("first") << 0 << u"640"_s << u"480"_s;
        QTest::newRow("second") << 1 << u"800"_s << u"600"_s;
        QTest::newRow("third") << 2 << u"1024"_s << u"768"_s;
        QTest::newRow("none chosen") << -1 << u"1024"_s << u"768"_s;
    }
    void changeNowAppliesTheChosenResolution()
    {
        QFETCH(int, index);
        QFETCH(QString, width);
        QFETCH(QString, height);
        const Desk desk;
        QCOMPARE(desk.change(index), changeTo(width, height));
        QCOMPARE(desk.form->OldWidth.value(), 1920);
        QCOMPARE(desk.form->OldHeight.value(), 1080);
        QCOMPARE(desk.prompts.shown(), 0);
    }

    void theFactsDoNotFollowAChange()
    {
        const Desk desk;
        desk.change(0);
        QCOMPARE(desk.form->width1->text(), u"1920"_s);
        QCOMPARE(desk.form->height1->text(), u"1080"_s);
    }

    void escReturnsToTheResolutionBefore()
    {
        const Desk desk;
        desk.change(0);
        QCOMPARE(desk.escape(), backTo(u"1920"_s, u"1080"_s));
    }

    void afterTwoChangesEscUndoesTheSecond()
    {
        const Desk desk;
        desk.change(0);
        desk.change(1);
        QCOMPARE(desk.escape(), backTo(u"640"_s, u"480"_s));
    }

    void escBeforeAnyChangeAsksForNothingAtAll()
    {
        const Desk desk;
        desk.control->refuses = [](qint32 width, qint32) { return width == 0; };
        QCOMPARE(desk.escape(), backTo(u"0"_s, u"0"_s));
        QVERIFY(desk.control->failed);
        QCOMPARE(desk.prompts.shown(), 0);
    }

    void escWorksWhereverTheFocusIs_data()
    {
        QTest::addColumn<QString>("name");
        for (const char *name : {"Combo1", "NewSettingCommand", "driver", "height1"})
            QTest::newRow(name) << QString::fromLatin1(name);
    }
    void escWorksWhereverTheFocusIs()
    {
        QFETCH(QString, name);
        const Desk desk;
        desk.change(1);
        QVERIFY(showActive(*desk.form));
        auto *widget = desk.form->findChild<QWidget *>(name);
        widget->setFocus();
        QTest::keyClick(widget, Qt::Key_Escape);
        QCOMPARE(desk.control->takeCalls(), backTo(u"1920"_s, u"1080"_s));
    }

    void escInTheOpenListOnlyClosesIt()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        desk.control->takeCalls();
        desk.form->Combo1->showPopup();
        QTRY_VERIFY(QApplication::activePopupWidget());
        QTest::keyClick(QApplication::activePopupWidget(), Qt::Key_Escape);
        QTRY_VERIFY(!QApplication::activePopupWidget());
        QCOMPARE(desk.control->takeCalls(), QStringList());
    }

    void escHeldDownIsOneWish()
    {
        const Desk desk;
        desk.change(0);
        desk.control->takeCalls();
        QKeyEvent held(QEvent::KeyPress, Qt::Key_Escape, Qt::NoModifier, QString(), true);
        QApplication::sendEvent(desk.form.get(), &held);
        QCOMPARE(desk.control->takeCalls(), QStringList());
    }

    void theCancelButtonIsOutOfSight()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        QVERIFY(!desk.form->Command1->isVisible());
        QVERIFY(desk.form->Command1->isEnabled());
    }

    void aRefusedChangeEndsTheProgram()
    {
        Desk desk;
        const ProgramEndSpy end;
        desk.control->refuses = [](qint32, qint32) { return true; };
        desk.prompts.expectError(error::ObjectRequired);
        desk.change(1);
        QVERIFY(desk.prompts.allShown());
        QCOMPARE(end.count(), 1);
    }

    void aRefusedWayBackIsNotToldAnybody()
    {
        const Desk desk;
        desk.change(0);
        desk.control->refuses = [](qint32, qint32) { return true; };
        QCOMPARE(desk.escape(), backTo(u"1920"_s, u"1080"_s));
        QCOMPARE(desk.prompts.shown(), 0);
    }

    void aResolutionBeyond16BitsEndsTheProgram_data()
    {
        QTest::addColumn<qint32>("width");
        QTest::addColumn<qint32>("height");
        QTest::newRow("width") << 32768 << 1080;
        QTest::newRow("height") << 1920 << 32768;
    }
    void aResolutionBeyond16BitsEndsTheProgram()
    {
        QFETCH(qint32, width);
        QFETCH(qint32, height);
        Desk desk(width, height);
        const ProgramEndSpy end;
        desk.prompts.expectError(error::Overflow);
        const QStringList calls = desk.change(0);
        QVERIFY(desk.prompts.allShown());
        QCOMPARE(end.count(), 1);
        QVERIFY(!calls.contains(u"Apply = True"_s));
    }

    void tabFollowsTheEye()
    {
        const Desk desk;
        QVERIFY(showActive(*desk.form));
        desk.form->driver->setFocus();
        const QStringList order{u"driver"_s, u"desc"_s,    u"id"_s,     u"manufacturer"_s,
                                u"width1"_s, u"height1"_s, u"Combo1"_s, u"NewSettingCommand"_s};
        QCOMPARE(tabbedThrough(8), order + QStringList{u"driver"_s});
    }

    void closingTheWindowTakesTheControlWithIt()
    {
        const Desk desk;
        desk.form->show();
        QVERIFY(closingTakes(*desk.form, desk.control));
    }
};

QTEST_MAIN(TestResolutionWindow)
#include "TestResolutionWindow.moc"
