#include <map>
#include <set>

#include <QAction>
#include <QLayout>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "launcher/Form1.h"
#include "launcher/MenuTree.h"
#include "launcher/ToolSlots.h"
#include "launcher/frmPanel.h"
#include "runtime/WindowSlot.h"
#include "tests/support/ScriptedPrompts.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

struct OpenedItem {
    std::uint32_t member;
    std::optional<std::int32_t> argument;
    QString caption;

    bool operator==(const OpenedItem &) const = default;
};

using OpenedItems = QList<OpenedItem>;

class RecordingControlPanel : public ControlPanel
{
public:
    explicit RecordingControlPanel(OpenedItems &opened) : m_opened(opened) { }

    void open(Member member, std::optional<std::int32_t> argument, const QString &caption) override
    {
        m_opened.append({static_cast<std::uint32_t>(member), argument, caption});
    }

private:
    OpenedItems &m_opened;
};

class ToolWindow : public QWidget
{
public:
    bool refusesToClose = false;

protected:
    void closeEvent(QCloseEvent *event) override { event->setAccepted(!refusesToClose); }
};

const QStringList toolNames{
    QStringLiteral("frmBrowse"), QStringLiteral("frmPOP"),     QStringLiteral("frmSend"),
    QStringLiteral("frmFTP"),    QStringLiteral("frmPing"),    QStringLiteral("frmIP"),
    QStringLiteral("frmView"),   QStringLiteral("frmPicEdit"), QStringLiteral("frmCapture"),
    QStringLiteral("frmText"),   QStringLiteral("frmFile"),    QStringLiteral("frmRes"),
    QStringLiteral("frmInfo")};

// The suite as the composition root puts it together, with recording tools and settings items.
class Suite
{
public:
    explicit Suite(const QStringList &built = toolNames)
    {
        for (const QString &name : built)
            tools.setFactory(name, [this, name] { return make(name); });
    }

    frmPanel &panel() { return *static_cast<frmPanel *>(launcher.ensure()); }
    ToolWindow *tool(const QString &name) { return static_cast<ToolWindow *>(tools[name].window()); }

    QAction *item(const QString &name)
    {
        auto *found = panel().findChild<QAction *>(name);
        if (!found)
            qFatal("no menu item %s", qPrintable(name));
        return found;
    }
    void choose(const QString &name) { item(name)->trigger(); }

    OpenedItems opened;
    std::map<QString, int> made;
    QString failingTool;
    ToolSlots tools;
    WindowSlot launcher{
        [this] { return new frmPanel(tools, std::make_unique<RecordingControlPanel>(opened)); }};

private:
    QWidget *make(const QString &name)
    {
        if (name == failingTool)
            throw RuntimeError(error::PermissionDenied);
        ++made[name];
        auto *window = new ToolWindow;
        window->setObjectName(name);
        return window;
    }
};

QIcon someIcon()
{
    QPixmap picture(16, 16);
    picture.fill(Qt::darkGreen);
    return QIcon(picture);
}

QStringList shownItems(const QMenu &menu)
{
    QStringList captions;
    for (const QAction *action : menu.actions()) {
        if (action->isVisible())
            captions += action->text();
    }
    return captions;
}

// Runs the program's event loop, as the composition root does, for one step of the user; tells whether that
// step ended the program.
bool endsTheProgram(const std::function<void()> &step)
{
    constexpr int stillRuns = 99;
    const QSignalSpy lastWindowClosed(qApp, &QGuiApplication::lastWindowClosed);
    QTimer::singleShot(0, qApp, [&] {
        step();
        if (lastWindowClosed.isEmpty())
            QCoreApplication::exit(stillRuns);
    });
    return QApplication::exec() != stillRuns;
}

} // namespace

class TestLauncher : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void cleanup();

    void theTreeHasEveryItemInItsPlace();
    void thePopUpsShowExactlyTheirItems_data();
    void thePopUpsShowExactlyTheirItems();
    void onlyThreePopUpsCanBeReached();
    void hiddenAndUnboundItemsDoNothing();
    void settingsItems_data();
    void settingsItems();
    void everyToolItemShowsItsWindow_data();
    void everyToolItemShowsItsWindow();

    void anItemWhoseToolIsMissingIsDisabled();
    void choosingAToolTwiceShowsTheOneWindow();
    void aMinimisedToolIsRestored();
    void aClosedToolIsMadeAfreshWithTheIcon();
    void aToolClosedInABusyLoopIsMadeAfresh();
    void aToolThatRefusesToCloseStays();
    void closingTheLauncherLeavesToolsOpen();
    void aFailingToolEndsInOneErrorBox();

    void thePanelIsLaidOutAsStated();
    void thePanelMakesRoomForLargeText();
    void aButtonPopsUpItsMenuAtThePointer();
    void theKeyboardPopsUpAMenuAtTheButton();
    void anotherIndexPopsUpNothing();

    void theAboutBoxIsLaidOutAsStated();
    void theAboutBoxSaysWhatItShould();
    void theAboutBoxCutsNoText_data();
    void theAboutBoxCutsNoText();
    void loadingTheAboutBoxCreatesTheLauncherHidden();
    void continueShowsTheLauncherAndUnloadsTheAboutBox();
    void continueCreatesTheLauncherWhenItIsGone();
    void quitEndsTheProgramAtOnce();
    void closingTheAboutBoxAloneEndsTheProgram_data();
    void closingTheAboutBoxAloneEndsTheProgram();
    void theProgramEndsWithItsLastWindow();
};

void TestLauncher::initTestCase()
{
    QApplication::setWindowIcon(someIcon());
    QApplication::setQuitOnLastWindowClosed(true);
}

void TestLauncher::cleanup()
{
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    QVERIFY(QApplication::topLevelWidgets().isEmpty());
}

void TestLauncher::theTreeHasEveryItemInItsPlace()
{
    const QStringList expected{u"med"_qs,  u"wav"_qs,   u"mid"_qs,  u"cd"_qs,    u"avi"_qs,     u"vol"_qs,
                               u"net"_qs,  u"con"_qs,   u"brs"_qs,  u"irc"_qs,   u"rec"_qs,     u"snd"_qs,
                               u"ftp"_qs,  u"util"_qs,  u"png"_qs,  u"fing"_qs,  u"locip"_qs,   u"genutil"_qs,
                               u"pic"_qs,  u"image"_qs, u"calc"_qs, u"cal"_qs,   u"cap"_qs,     u"txt"_qs,
                               u"comp"_qs, u"file"_qs,  u"ctrl"_qs, u"prog"_qs,  u"hard"_qs,    u"dial"_qs,
                               u"disp"_qs, u"systm"_qs, u"win"_qs,  u"print"_qs, u"printer"_qs, u"pass"_qs,
                               u"mod"_qs,  u"mouse"_qs, u"inet"_qs, u"time"_qs,  u"regset"_qs,  u"media"_qs,
                               u"font"_qs, u"snds"_qs,  u"res"_qs,  u"sys"_qs,   u"shut"_qs,    u"fun"_qs,
                               u"luck"_qs, u"smrt"_qs,  u"wis"_qs,  u"jok"_qs,   u"prof"_qs,    u"cut"_qs,
                               u"emp"_qs,  u"user"_qs,  u"skin"_qs, u"add"_qs};
    QStringList names;
    for (const MenuItem &item : menuTree())
        names += QString::fromLatin1(item.name);
    QCOMPARE(names, expected);

    Suite suite;
    for (const MenuItem &item : menuTree()) {
        const QAction *action = suite.item(QString::fromLatin1(item.name));
        QCOMPARE(action->text(), QString::fromLatin1(item.caption));
        QCOMPARE(action->isVisible(), item.visible);
        if (item.parent) {
            const QMenu *menu = suite.panel().menu(QString::fromLatin1(item.parent));
            QVERIFY2(menu && menu->actions().contains(const_cast<QAction *>(action)), item.name);
        }
    }
    for (const char *hidden :
         {"con", "irc", "fing", "calc", "cal", "shut", "med", "net", "genutil", "comp", "fun", "prof"})
        QVERIFY2(!suite.item(QString::fromLatin1(hidden))->isVisible(), hidden);
    QVERIFY(!suite.item(u"emp"_qs)->isEnabled());
}

void TestLauncher::thePopUpsShowExactlyTheirItems_data()
{
    QTest::addColumn<QString>("menu");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("items");

    QTest::newRow("My Computer") << u"comp"_qs << u"My computer"_qs
                                 << QStringList{u"File manager"_qs, u"Control panel items"_qs,
                                                u"Screen resolution"_qs, u"System Info"_qs};
    QTest::newRow("Internet") << u"net"_qs << u"Internet"_qs
                              << QStringList{u"Browse the Internet"_qs, u"Receive e-mail"_qs,
                                             u"Send e-mail"_qs, u"FTP client"_qs, u"Utilities"_qs};
    QTest::newRow("Utilities of the Internet")
        << u"util"_qs << u"Utilities"_qs << QStringList{u"Ping"_qs, u"Get local IP"_qs};
    QTest::newRow("Utilities") << u"genutil"_qs << u"Utilities"_qs
                               << QStringList{u"Picture viewer"_qs, u"Picture editor"_qs,
                                              u"Screen capture"_qs, u"Text editor"_qs};
    QTest::newRow("settings items") << u"ctrl"_qs << u"Control panel items"_qs
                                    << QStringList{u"Add/Remove programs"_qs,
                                                   u"Add new hardware"_qs,
                                                   u"Dial-up Wiazrd"_qs,
                                                   u"Display"_qs,
                                                   u"System"_qs,
                                                   u"Windows Setup"_qs,
                                                   u"Printers"_qs,
                                                   u"Add printer Wizard"_qs,
                                                   u"Passwords"_qs,
                                                   u"Modem"_qs,
                                                   u"Mouse"_qs,
                                                   u"Internet"_qs,
                                                   u"Time/Date"_qs,
                                                   u"Regional Settings"_qs,
                                                   u"Multimedia"_qs,
                                                   u"Fonts"_qs,
                                                   u"Sounds"_qs};
    QTest::newRow("media") << u"med"_qs << u"media"_qs
                           << QStringList{u"wav"_qs, u"midi"_qs, u"cd"_qs, u"avi"_qs, u"volume"_qs};
    QTest::newRow("fun") << u"fun"_qs << u"fun"_qs
                         << QStringList{u"feel lucky?"_qs, u"think u r smart?"_qs, u"wisdom"_qs, u"jokes"_qs};
    QTest::newRow("profiles") << u"prof"_qs << u"profiles"_qs
                              << QStringList{u"my shortcuts"_qs, u"change user"_qs, u"select skin"_qs,
                                             u"add user"_qs};
}

void TestLauncher::thePopUpsShowExactlyTheirItems()
{
    QFETCH(QString, menu);
    QFETCH(QString, title);
    QFETCH(QStringList, items);

    Suite suite;
    QCOMPARE(suite.panel().menu(menu)->title(), title);
    QCOMPARE(shownItems(*suite.panel().menu(menu)), items);
}

void TestLauncher::onlyThreePopUpsCanBeReached()
{
    Suite suite;
    std::set<QString> reachable;
    for (const auto &[index, button] : suite.panel().Command1)
        reachable.insert(QString::fromLatin1(popUpOf(index)));
    QCOMPARE(reachable, (std::set<QString>{u"comp"_qs, u"net"_qs, u"genutil"_qs}));
    QVERIFY(!suite.panel().findChild<QWidget *>(u"qt_menubar"_qs));
}

void TestLauncher::hiddenAndUnboundItemsDoNothing()
{
    Suite suite;
    ScriptedPrompts prompts;
    ProgramEndSpy ends;
    for (const MenuItem &item : menuTree()) {
        if (item.kind == MenuItem::Kind::Inert)
            suite.choose(QString::fromLatin1(item.name));
    }
    QCOMPARE(suite.opened.size(), 0);
    QVERIFY(suite.made.empty());
    QCOMPARE(ends.count(), 0);
}

void TestLauncher::settingsItems_data()
{
    QTest::addColumn<QString>("caption");
    QTest::addColumn<quint32>("member");
    QTest::addColumn<qint64>("argument");

    const qint64 none = std::numeric_limits<qint64>::max();
    QTest::newRow("systm") << u"System"_qs << 0x60030002U << qint64{-2147483633};
    QTest::newRow("hard") << u"Add new hardware"_qs << 0x60030003U << none;
    QTest::newRow("prog") << u"Add/Remove programs"_qs << 0x60030004U << qint64{0};
    QTest::newRow("win") << u"Windows Setup"_qs << 0x60030004U << qint64{2};
    QTest::newRow("regset") << u"Regional Settings"_qs << 0x60030005U << qint64{0};
    QTest::newRow("disp") << u"Display"_qs << 0x60030007U << qint64{0};
    QTest::newRow("mouse") << u"Mouse"_qs << 0x60030008U << none;
    QTest::newRow("print") << u"Printers"_qs << 0x6003000AU << none;
    QTest::newRow("font") << u"Fonts"_qs << 0x6003000BU << none;
    QTest::newRow("media") << u"Multimedia"_qs << 0x6003000CU << qint64{0};
    QTest::newRow("snds") << u"Sounds"_qs << 0x6003000DU << none;
    QTest::newRow("time") << u"Time/Date"_qs << 0x6003000EU << none;
    QTest::newRow("mod") << u"Modem"_qs << 0x6003000FU << none;
    QTest::newRow("pass") << u"Passwords"_qs << 0x60030011U << none;
    QTest::newRow("inet") << u"Internet"_qs << 0x60030012U << none;
    QTest::newRow("printer") << u"Add printer Wizard"_qs << 0x60030015U << none;
    QTest::newRow("dial") << u"Dial-up Wiazrd"_qs << 0x60030018U << none;
}

void TestLauncher::settingsItems()
{
    QFETCH(QString, caption);
    QFETCH(quint32, member);
    QFETCH(qint64, argument);

    Suite suite;
    suite.choose(QString::fromLatin1(QTest::currentDataTag()));

    std::optional<std::int32_t> given;
    if (argument != std::numeric_limits<qint64>::max())
        given = static_cast<std::int32_t>(argument);
    QVERIFY((suite.opened == OpenedItems{{member, given, caption}}));
    QVERIFY(suite.made.empty());
}

void TestLauncher::everyToolItemShowsItsWindow_data()
{
    QTest::addColumn<QString>("window");

    QTest::newRow("brs") << u"frmBrowse"_qs;
    QTest::newRow("rec") << u"frmPOP"_qs;
    QTest::newRow("snd") << u"frmSend"_qs;
    QTest::newRow("ftp") << u"frmFTP"_qs;
    QTest::newRow("png") << u"frmPing"_qs;
    QTest::newRow("locip") << u"frmIP"_qs;
    QTest::newRow("pic") << u"frmView"_qs;
    QTest::newRow("image") << u"frmPicEdit"_qs;
    QTest::newRow("cap") << u"frmCapture"_qs;
    QTest::newRow("txt") << u"frmText"_qs;
    QTest::newRow("file") << u"frmFile"_qs;
    QTest::newRow("res") << u"frmRes"_qs;
    QTest::newRow("sys") << u"frmInfo"_qs;
}

void TestLauncher::everyToolItemShowsItsWindow()
{
    QFETCH(QString, window);

    Suite suite;
    suite.panel().setWindowIcon(someIcon());
    suite.choose(QString::fromLatin1(QTest::currentDataTag()));

    QCOMPARE(suite.made.size(), std::size_t{1});
    ToolWindow *tool = suite.tool(window);
    QVERIFY(tool);
    QVERIFY(tool->isVisible());
    QVERIFY(!tool->isModal());
    QVERIFY(!tool->parent());
    QVERIFY(!tool->windowHandle()->transientParent());
    QCOMPARE(tool->windowIcon().cacheKey(), suite.panel().windowIcon().cacheKey());
}

void TestLauncher::anItemWhoseToolIsMissingIsDisabled()
{
    Suite suite({u"frmText"_qs});
    for (const MenuItem &item : menuTree()) {
        if (item.kind == MenuItem::Kind::Tool)
            QCOMPARE(suite.item(QString::fromLatin1(item.name))->isEnabled(),
                     item.name == std::string_view("txt"));
        if (item.kind == MenuItem::Kind::Settings)
            QVERIFY2(suite.item(QString::fromLatin1(item.name))->isEnabled(), item.name);
    }
    suite.choose(u"brs"_qs);
    QVERIFY(suite.made.empty());
}

void TestLauncher::choosingAToolTwiceShowsTheOneWindow()
{
    Suite suite;
    suite.choose(u"txt"_qs);
    ToolWindow *tool = suite.tool(u"frmText"_qs);
    suite.choose(u"file"_qs);
    QVERIFY(QTest::qWaitForWindowActive(suite.tool(u"frmFile"_qs)));

    suite.choose(u"txt"_qs);

    QCOMPARE(suite.made[u"frmText"_qs], 1);
    QCOMPARE(suite.tool(u"frmText"_qs), tool);
    QVERIFY(QTest::qWaitForWindowActive(tool));
}

void TestLauncher::aMinimisedToolIsRestored()
{
    Suite suite;
    suite.choose(u"txt"_qs);
    ToolWindow *tool = suite.tool(u"frmText"_qs);
    tool->showMinimized();
    QVERIFY(tool->isMinimized());
    suite.choose(u"txt"_qs);
    QVERIFY(!tool->isMinimized());
    QVERIFY(tool->isVisible());
    QCOMPARE(suite.made[u"frmText"_qs], 1);

    tool->showMaximized();
    tool->setWindowState(tool->windowState() | Qt::WindowMinimized);
    suite.choose(u"txt"_qs);
    QVERIFY(tool->isMaximized());
}

void TestLauncher::aClosedToolIsMadeAfreshWithTheIcon()
{
    Suite suite;
    suite.panel().setWindowIcon(someIcon());
    suite.choose(u"txt"_qs);
    const QPointer<ToolWindow> first = suite.tool(u"frmText"_qs);
    first->close();
    QTRY_VERIFY(!first);
    QVERIFY(!suite.tool(u"frmText"_qs));

    suite.choose(u"txt"_qs);
    QCOMPARE(suite.made[u"frmText"_qs], 2);
    QVERIFY(suite.tool(u"frmText"_qs)->isVisible());
    QCOMPARE(suite.tool(u"frmText"_qs)->windowIcon().cacheKey(), suite.panel().windowIcon().cacheKey());
}

void TestLauncher::aToolClosedInABusyLoopIsMadeAfresh()
{
    Suite suite;
    suite.choose(u"txt"_qs);
    const QPointer<ToolWindow> first = suite.tool(u"frmText"_qs);
    first->close();
    QVERIFY(first);

    suite.choose(u"txt"_qs);
    QVERIFY(suite.tool(u"frmText"_qs) != first);
    QVERIFY(suite.tool(u"frmText"_qs)->isVisible());
    QTRY_VERIFY(!first);
    QVERIFY(suite.tool(u"frmText"_qs));
}

void TestLauncher::aToolThatRefusesToCloseStays()
{
    Suite suite;
    suite.choose(u"txt"_qs);
    ToolWindow *tool = suite.tool(u"frmText"_qs);
    tool->refusesToClose = true;
    QVERIFY(!tool->close());
    suite.choose(u"txt"_qs);
    QCOMPARE(suite.made[u"frmText"_qs], 1);
    QCOMPARE(suite.tool(u"frmText"_qs), tool);
    tool->refusesToClose = false;
}

void TestLauncher::closingTheLauncherLeavesToolsOpen()
{
    Suite suite;
    suite.launcher.show();
    suite.choose(u"txt"_qs);
    ToolWindow *tool = suite.tool(u"frmText"_qs);

    QVERIFY(!endsTheProgram([&] { suite.panel().close(); }));
    QTRY_VERIFY(!suite.launcher.window());
    QVERIFY(tool->isVisible());

    QVERIFY(endsTheProgram([&] { tool->close(); }));
}

void TestLauncher::aFailingToolEndsInOneErrorBox()
{
    Suite suite;
    suite.failingTool = u"frmText"_qs;
    ScriptedPrompts prompts;
    ProgramEndSpy ends;
    prompts.expectError(error::PermissionDenied);
    suite.choose(u"txt"_qs);
    QVERIFY(prompts.allShown());
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.status(), 1);
    QVERIFY(!suite.tool(u"frmText"_qs));
}

void TestLauncher::thePanelIsLaidOutAsStated()
{
    Suite suite;
    frmPanel &panel = suite.panel();
    QCOMPARE(panel.windowTitle(), u" "_qs);
    QCOMPARE(panel.height(), 74);
    QCOMPARE(panel.minimumSize(), panel.maximumSize());
    QVERIFY(panel.width() >= 106);

    int count = 0;
    for (const auto &[index, button] : panel.Command1) {
        QCOMPARE(button->y(), (std::map<int, int>{{1, 0}, {2, 24}, {4, 48}}.at(index)));
        QCOMPARE(button->x(), 0);
        QCOMPARE(button->height(), 25);
        QCOMPARE(button->width(), panel.width() - 1);
        QCOMPARE(button->objectName(), u"Command1_%1"_qs.arg(index));
        ++count;
    }
    QCOMPARE(count, 3);
    QCOMPARE(panel.Command1[1]->text(), u"My Computer"_qs);
    QCOMPARE(panel.Command1[2]->text(), u"Internet"_qs);
    QCOMPARE(panel.Command1[4]->text(), u"Utilities"_qs);
}

void TestLauncher::thePanelMakesRoomForLargeText()
{
    const QFont usual = QApplication::font();
    QFont large = usual;
    large.setPointSize(30);
    QApplication::setFont(large);
    {
        Suite suite;
        for (const auto &[index, button] : suite.panel().Command1)
            QVERIFY(button->width() >= button->fontMetrics().horizontalAdvance(button->text()));
        QCOMPARE(suite.panel().width(), suite.panel().Command1[1]->width() + 1);
    }
    QApplication::setFont(usual);
}

void TestLauncher::aButtonPopsUpItsMenuAtThePointer()
{
    Suite suite;
    suite.launcher.show();
    frmPanel &panel = suite.panel();
    QVERIFY(QTest::qWaitForWindowExposed(&panel));
    for (const auto &[index, name] :
         std::map<int, QString>{{1, u"comp"_qs}, {2, u"net"_qs}, {4, u"genutil"_qs}}) {
        QPushButton *button = panel.Command1[index];
        const QPoint pointer = button->mapToGlobal(QPoint(30, 11));
        QCursor::setPos(pointer);
        QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(30, 11));
        QMenu *menu = panel.menu(name);
        QTRY_VERIFY(menu->isVisible());
        QCOMPARE(QApplication::activePopupWidget(), menu);
        QCOMPARE(menu->pos(), pointer);
        menu->close();
    }
}

void TestLauncher::theKeyboardPopsUpAMenuAtTheButton()
{
    Suite suite;
    suite.launcher.show();
    frmPanel &panel = suite.panel();
    QVERIFY(QTest::qWaitForWindowActive(&panel));
    QCursor::setPos(panel.mapToGlobal(QPoint(300, 300)));
    QPushButton *button = panel.Command1[4];
    button->setFocus();
    QTest::keyClick(button, Qt::Key_Space);
    QTRY_VERIFY(panel.menu(u"genutil"_qs)->isVisible());
    QCOMPARE(panel.menu(u"genutil"_qs)->pos(), button->mapToGlobal(button->rect().bottomLeft()));
    panel.menu(u"genutil"_qs)->close();
}

void TestLauncher::anotherIndexPopsUpNothing()
{
    Suite suite;
    for (const int index : {-1, 6, 32767})
        suite.panel().Command1_Click(index);
    QVERIFY(!QApplication::activePopupWidget());
}

void TestLauncher::theAboutBoxIsLaidOutAsStated()
{
    Suite suite;
    Form1 box(suite.launcher);
    QCOMPARE(box.windowTitle(), u" "_qs);
    QCOMPARE(box.minimumSize(), box.maximumSize());
    QCOMPARE(box.size(), QSize(344, 281));
    QCOMPARE(box.Command1[0]->geometry(), QRect(48, 248, 73, 25));
    QCOMPARE(box.Command1[1]->geometry(), QRect(224, 248, 73, 25));
    QVERIFY(!box.windowIcon().isNull());

    int above = 0;
    for (const QLabel *label :
         {box.Label1, box.Label2, box.Label3, box.Label4, box.Label5, box.Label6, box.Label7}) {
        box.ensurePolished();
        label->parentWidget()->layout()->activate();
        QVERIFY(label->y() >= above);
        above = label->geometry().bottom();
    }
}

void TestLauncher::theAboutBoxSaysWhatItShould()
{
    Suite suite;
    Form1 box(suite.launcher);
    QCOMPARE(box.Label1->text(), u"Vandrel"_qs);
    QCOMPARE(box.Label2->text(), u"A bundle of 100% free poweful utilities!!!"_qs);
    QCOMPARE(box.Label3->text(), u"The Vandrel developers, 2026"_qs);
    const QStringList credit = box.Label4->text().split(u'\n');
    QVERIFY(credit.size() > 2);
    QCOMPARE(credit[0], u"This application uses C-Image 3.0 Technologies"_qs);
    QCOMPARE(credit[1], u"For more information:"_qs);
    QCOMPARE(box.Label5->text(), u"v1.00 (BETA)"_qs);
    QCOMPARE(box.Label6->text(),
             u"To contact the author about comments, bugs, or advertising in future versions of "
             "Vandrel, please feel free to send an e-mail to:"_qs);
    QVERIFY(box.Label7->text().contains(u'@'));
    QCOMPARE(box.Command1[0]->text(), u"&Continue"_qs);
    QCOMPARE(box.Command1[1]->text(), u"&Quit"_qs);
}

void TestLauncher::theAboutBoxCutsNoText_data()
{
    QTest::addColumn<int>("points");
    QTest::newRow("usual") << 9;
    QTest::newRow("large") << 20;
    QTest::newRow("huge") << 32;
}

void TestLauncher::theAboutBoxCutsNoText()
{
    QFETCH(int, points);

    const QFont usual = QApplication::font();
    QFont font = usual;
    font.setPointSize(points);
    QApplication::setFont(font);
    {
        Suite suite;
        Form1 box(suite.launcher);
        box.Label1->parentWidget()->layout()->activate();
        for (const QLabel *label :
             {box.Label1, box.Label2, box.Label3, box.Label4, box.Label5, box.Label6, box.Label7}) {
            QVERIFY(label->width() >= label->minimumSizeHint().width());
            const int needed = label->hasHeightForWidth() ? label->heightForWidth(label->width())
                                                          : label->sizeHint().height();
            QVERIFY(label->height() >= needed);
        }
        const QWidget *texts = box.Label1->parentWidget();
        QVERIFY(texts->geometry().bottom() < box.Command1[0]->y());
        QVERIFY(box.rect().contains(texts->geometry()));
        QVERIFY(box.rect().contains(box.Command1[1]->geometry()));
    }
    QApplication::setFont(usual);
}

void TestLauncher::loadingTheAboutBoxCreatesTheLauncherHidden()
{
    Suite suite;
    Form1 box(suite.launcher);
    QVERIFY(suite.launcher.window());
    QVERIFY(!suite.launcher.window()->isVisible());
    QCOMPARE(suite.launcher.window()->windowIcon().cacheKey(), box.windowIcon().cacheKey());
}

void TestLauncher::continueShowsTheLauncherAndUnloadsTheAboutBox()
{
    Suite suite;
    WindowSlot about([&suite] { return new Form1(suite.launcher); });
    about.show();
    auto *box = static_cast<Form1 *>(about.window());
    QVERIFY(QTest::qWaitForWindowActive(box));
    QWidget *made = suite.launcher.window();

    QVERIFY(!endsTheProgram([&] { QTest::keyClick(box, Qt::Key_C, Qt::AltModifier); }));

    QTRY_VERIFY(!about.window());
    QCOMPARE(suite.launcher.window(), made);
    QVERIFY(made->isVisible());
    QVERIFY(!made->isModal());
}

void TestLauncher::continueCreatesTheLauncherWhenItIsGone()
{
    Suite suite;
    auto *box = new Form1(suite.launcher);
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->show();
    delete suite.launcher.window();
    box->Command1[0]->click();
    QVERIFY(suite.launcher.window());
    QVERIFY(suite.launcher.window()->isVisible());
}

void TestLauncher::quitEndsTheProgramAtOnce()
{
    Suite suite;
    ProgramEndSpy ends;
    Form1 box(suite.launcher);
    box.show();
    suite.choose(u"txt"_qs);
    suite.tool(u"frmText"_qs)->refusesToClose = true;
    box.Command1[1]->click();
    QCOMPARE(ends.count(), 1);
    QCOMPARE(ends.status(), 0);
    QVERIFY(suite.tool(u"frmText"_qs)->isVisible());
    box.Command1_Click(7);
    QCOMPARE(ends.count(), 2);
}

void TestLauncher::closingTheAboutBoxAloneEndsTheProgram_data()
{
    QTest::addColumn<bool>("byKeyboard");
    QTest::newRow("close box") << false;
    QTest::newRow("Esc") << true;
}

void TestLauncher::closingTheAboutBoxAloneEndsTheProgram()
{
    QFETCH(bool, byKeyboard);

    Suite suite;
    WindowSlot about([&suite] { return new Form1(suite.launcher); });
    about.show();
    QVERIFY(QTest::qWaitForWindowActive(about.window()));
    QVERIFY(endsTheProgram([&] {
        if (byKeyboard)
            QTest::keyClick(about.window(), Qt::Key_Escape);
        else
            about.window()->close();
    }));
    QVERIFY(!about.window());
    QVERIFY(!suite.launcher.window()->isVisible());
}

void TestLauncher::theProgramEndsWithItsLastWindow()
{
    Suite suite;
    suite.launcher.show();
    suite.choose(u"txt"_qs);
    suite.choose(u"file"_qs);
    QVERIFY(!endsTheProgram([&] { suite.tool(u"frmFile"_qs)->close(); }));
    QVERIFY(!endsTheProgram([&] { suite.panel().close(); }));
    QVERIFY(endsTheProgram([&] { suite.tool(u"frmText"_qs)->close(); }));
}

QTEST_MAIN(TestLauncher)
#include "TestLauncher.moc"
