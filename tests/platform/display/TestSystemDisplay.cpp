#include <memory>

#include <QPushButton>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

#include "controls/ComboBox.h"
#include "platform/display/RandrMonitor.h"
#include "platform/display/SystemDisplay.h"
#include "system/frmRes.h"
#include "tests/platform/xserver/XServer.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

namespace {

DisplayFacts someFacts()
{
    return {u"driver"_s, u"description"_s, u"id"_s, u"maker"_s};
}

std::unique_ptr<SystemDisplay> displayOfServer()
{
    return std::make_unique<SystemDisplay>(std::make_unique<RandrMonitor>(), someFacts);
}

/// A screen in memory with modes to choose from. Nobody can look at it from outside.
class Screen
{
public:
    // The size of the screen and that of the monitor's mode, as another program tells them.
    static QStringList sizes()
    {
        const QString told = QString::fromUtf8(XServer::output({u"xrandr"_s}));
        static const QRegularExpression screen(u"current (\\d+) x (\\d+)"_s);
        static const QRegularExpression mode(u"^ +(\\d+x\\d+).*\\*"_s, QRegularExpression::MultilineOption);
        const QRegularExpressionMatch size = screen.match(told);
        return {size.captured(1) + u'x' + size.captured(2), mode.match(told).captured(1)};
    }

    bool isThere() const { return m_server.isThere(); }

private:
    const QTemporaryDir m_folder;
    const XServer m_server{u"Xvnc"_s,
                           {u"-SecurityTypes"_s, u"None"_s, u"-rfbport"_s, u"-1"_s, u"-rfbunixpath"_s,
                            m_folder.filePath(u"vnc"_s), u"-geometry"_s, u"1280x960"_s}};
};

QStringList both(const QString &size)
{
    return {size, size};
}

} // namespace

/// The display control on real X servers, beside what `xrandr` says.
class TestSystemDisplay : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void readTellsTheFactsAndTheResolution()
    {
        const Screen screen;
        QVERIFY(screen.isThere());
        const auto display = displayOfServer();
        QCOMPARE(display->Width(), 0);
        display->setRead(true);
        QCOMPARE(display->Width(), 1280);
        QCOMPARE(display->Height(), 960);
        QCOMPARE(display->DisplayDriver(), u"driver"_s);
        QCOMPARE(display->DeviceDescription(), u"description"_s);
        QCOMPARE(display->HardwareID(), u"id"_s);
        QCOMPARE(display->Manufacturer(), u"maker"_s);
        QVERIFY(!display->Failed());
    }

    void eachModeIsAppliedAndTakenBack_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("640x480") << 640 << 480;
        QTest::newRow("800x600") << 800 << 600;
        QTest::newRow("1024x768") << 1024 << 768;
        QTest::newRow("1920x1200") << 1920 << 1200;
    }
    void eachModeIsAppliedAndTakenBack()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        const Screen screen;
        QVERIFY(screen.isThere());
        const auto display = displayOfServer();
        display->setWidth(width);
        display->setHeight(height);
        display->setApply(true);
        QVERIFY(!display->Failed());
        QCOMPARE(Screen::sizes(), both(QString::fromLatin1(QTest::currentDataTag())));
        display->setWidth(1280);
        display->setHeight(960);
        display->setApply(true);
        QVERIFY(!display->Failed());
        QCOMPARE(Screen::sizes(), both(u"1280x960"_s));
    }

    void aRefusedChangeLeavesWhatWasInForce_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("nothing") << 0 << 0;
        QTest::newRow("negative") << -640 << -480;
        QTest::newRow("no such mode") << 641 << 480;
        QTest::newRow("too large") << 100'000 << 100'000;
    }
    void aRefusedChangeLeavesWhatWasInForce()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        const Screen screen;
        QVERIFY(screen.isThere());
        const auto display = displayOfServer();
        display->setRead(true);
        display->setWidth(width);
        display->setHeight(height);
        display->setApply(true);
        QVERIFY(display->Failed());
        QCOMPARE(display->Width(), 1280);
        QCOMPARE(display->Height(), 960);
        QCOMPARE(Screen::sizes(), both(u"1280x960"_s));
        // The next one is not held against it.
        display->setWidth(800);
        display->setHeight(600);
        display->setApply(true);
        QVERIFY(!display->Failed());
    }

    void falseTriggersDoNothing()
    {
        const Screen screen;
        QVERIFY(screen.isThere());
        const auto display = displayOfServer();
        display->setRead(false);
        QCOMPARE(display->Width(), 0);
        display->setWidth(800);
        display->setHeight(600);
        display->setApply(false);
        QCOMPARE(Screen::sizes(), both(u"1280x960"_s));
    }

    void theWindowChangesAndEscReturns()
    {
        const Screen screen;
        QVERIFY(screen.isThere());
        frmRes form(displayOfServer());
        form.NewSettingCommand->click();
        QCOMPARE(Screen::sizes(), both(u"1024x768"_s));
        form.Combo1->setListIndex(0);
        form.NewSettingCommand->click();
        QCOMPARE(Screen::sizes(), both(u"640x480"_s));
        QTest::keyClick(&form, Qt::Key_Escape);
        QCOMPARE(Screen::sizes(), both(u"1024x768"_s));
    }

    void escBeforeAnyChangeChangesNothing()
    {
        const Screen screen;
        QVERIFY(screen.isThere());
        frmRes form(displayOfServer());
        QTest::keyClick(&form, Qt::Key_Escape);
        QCOMPARE(Screen::sizes(), both(u"1280x960"_s));
        form.Combo1->setListIndex(1);
        form.NewSettingCommand->click();
        QTest::keyClick(&form, Qt::Key_Escape);
        QCOMPARE(Screen::sizes(), both(u"1280x960"_s));
    }

    /// A server whose screen has one mode for ever.
    void aServerWithoutModesRefuses()
    {
        const XServer server(u"Xvfb"_s, {u"-screen"_s, u"0"_s, u"1280x960x24"_s});
        QVERIFY(server.isThere());
        ScriptedPrompts prompts;
        const ProgramEndSpy end;
        prompts.expectError(error::ObjectRequired);
        frmRes form(displayOfServer());
        form.Combo1->setListIndex(0);
        form.NewSettingCommand->click();
        QVERIFY(prompts.allShown());
        QCOMPARE(end.count(), 1);
        QCOMPARE(RandrMonitor().resolution(), QSize(1280, 960));
    }

    void withoutAServerNothingIsKnown_data()
    {
        QTest::addColumn<bool>("hasServer");
        QTest::newRow("no server") << false;
        QTest::newRow("a server that knows nothing of modes") << true;
    }
    void withoutAServerNothingIsKnown()
    {
        QFETCH(bool, hasServer);
        std::unique_ptr<XServer> server;
        if (hasServer) {
            server = std::make_unique<XServer>(u"Xvfb"_s, QStringList{u"-extension"_s, u"RANDR"_s});
            QVERIFY(server->isThere());
        }
        const auto display = displayOfServer();
        display->setRead(true);
        QCOMPARE(display->Width(), 0);
        QCOMPARE(display->Height(), 0);
        display->setWidth(800);
        display->setHeight(600);
        display->setApply(true);
        QVERIFY(display->Failed());
    }
};

QTEST_MAIN(TestSystemDisplay)
#include "TestSystemDisplay.moc"
