#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include "platform/controlpanel/DesktopControlPanel.h"
#include "platform/controlpanel/SettingsPrograms.h"
#include "tests/support/ScriptedPrompts.h"

namespace vandrel::test {

using Member = ControlPanel::Member;

/// Opens settings items on a PATH that holds nothing but scripts that record how they were called.
class TestDesktopControlPanel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void theDesktopIsTheFirstKnownName_data();
    void theDesktopIsTheFirstKnownName();
    void everyItemHasAProgramOnTheLargeDesktops();
    void theDesktopsOwnProgramIsStarted();
    void aPanelThatIsNotInstalledIsPassedOver();
    void anUnknownDesktopTakesTheFirstProgramFound();
    void windowsSetupAndAddRemoveOpenTheSameProgramOnDifferentPages();
    void aMissingItemIsNamedInABox();
    void anItemThatTheDesktopDoesNotHaveIsNamedInABox();

private:
    void install(const QString &program);
    void installPanel(const QString &file);
    QString record() const;

    std::unique_ptr<QTemporaryDir> m_folder;
};

void TestDesktopControlPanel::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    qputenv("PATH", QFile::encodeName(m_folder->path()));
    qputenv("XDG_DATA_DIRS", QFile::encodeName(m_folder->path()));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_folder->path()));
    qputenv("XDG_CURRENT_DESKTOP", "GNOME");
}

void TestDesktopControlPanel::install(const QString &program)
{
    QFile script(m_folder->filePath(program));
    QVERIFY(script.open(QIODevice::WriteOnly));
    // Written aside and renamed, so that a waiting test never sees half a line.
    const QString text
        = QStringLiteral("#!/bin/sh\necho \"%1 $*\" > '%2/new'\n/bin/mv '%2/new' '%2/record'\n");
    script.write(text.arg(program, m_folder->path()).toUtf8());
    script.close();
    QVERIFY(script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

void TestDesktopControlPanel::installPanel(const QString &file)
{
    QVERIFY(QDir(m_folder->path()).mkpath(QStringLiteral("applications")));
    QFile panel(m_folder->filePath(QStringLiteral("applications/") + file));
    QVERIFY(panel.open(QIODevice::WriteOnly));
}

QString TestDesktopControlPanel::record() const
{
    QFile file(m_folder->filePath(QStringLiteral("record")));
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).trimmed() : QString();
}

void TestDesktopControlPanel::theDesktopIsTheFirstKnownName_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<std::optional<Desktop>>("desktop");
    QTest::newRow("one") << QStringLiteral("XFCE") << std::optional(Desktop::Xfce);
    QTest::newRow("list") << QStringLiteral("ubuntu:GNOME") << std::optional(Desktop::Gnome);
    QTest::newRow("two known") << QStringLiteral("Budgie:KDE") << std::optional(Desktop::Gnome);
    QTest::newRow("case") << QStringLiteral("kde") << std::optional(Desktop::Plasma);
    QTest::newRow("cinnamon") << QStringLiteral("X-Cinnamon") << std::optional(Desktop::Cinnamon);
    QTest::newRow("unknown") << QStringLiteral("sway") << std::optional<Desktop>();
    QTest::newRow("unset") << QString() << std::optional<Desktop>();
}

void TestDesktopControlPanel::theDesktopIsTheFirstKnownName()
{
    QFETCH(QString, value);
    QFETCH(std::optional<Desktop>, desktop);
    QCOMPARE(desktopFromEnvironment(value), desktop);
}

void TestDesktopControlPanel::everyItemHasAProgramOnTheLargeDesktops()
{
    for (const Member member :
         {Member::System, Member::AddNewHardware, Member::AddRemovePrograms, Member::RegionalSettings,
          Member::Display, Member::Mouse, Member::Printers, Member::Fonts, Member::Multimedia, Member::Sounds,
          Member::TimeDate, Member::Modem, Member::Passwords, Member::Internet, Member::AddPrinterWizard,
          Member::DialUpWizard}) {
        for (const Desktop desktop : {Desktop::Gnome, Desktop::Plasma, Desktop::Cinnamon})
            QVERIFY(!settingsCommands(desktop, member, -1).isEmpty());
    }
    QVERIFY(settingsCommands(Desktop::Xfce, Member::Passwords, -1).isEmpty());
}

void TestDesktopControlPanel::theDesktopsOwnProgramIsStarted()
{
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    install(QStringLiteral("xfce4-mouse-settings"));
    install(QStringLiteral("lxqt-config-input"));
    DesktopControlPanel panel;
    panel.open(Member::Mouse, {}, QStringLiteral("Mouse"));
    QTRY_COMPARE(record(), QStringLiteral("xfce4-mouse-settings"));
}

void TestDesktopControlPanel::aPanelThatIsNotInstalledIsPassedOver()
{
    install(QStringLiteral("gnome-control-center"));
    installPanel(QStringLiteral("gnome-system-panel.desktop"));
    DesktopControlPanel panel;
    panel.open(Member::TimeDate, {}, QStringLiteral("Time/Date"));
    QTRY_COMPARE(record(), QStringLiteral("gnome-control-center system datetime"));
}

void TestDesktopControlPanel::anUnknownDesktopTakesTheFirstProgramFound()
{
    qputenv("XDG_CURRENT_DESKTOP", "sway");
    install(QStringLiteral("mate-display-properties"));
    DesktopControlPanel panel;
    panel.open(Member::Display, 0, QStringLiteral("Display"));
    QTRY_COMPARE(record(), QStringLiteral("mate-display-properties"));
}

void TestDesktopControlPanel::windowsSetupAndAddRemoveOpenTheSameProgramOnDifferentPages()
{
    install(QStringLiteral("gnome-software"));
    DesktopControlPanel panel;
    panel.open(Member::AddRemovePrograms, 0, QStringLiteral("Add/Remove programs"));
    QTRY_COMPARE(record(), QStringLiteral("gnome-software --mode=installed"));
    panel.open(Member::AddRemovePrograms, 2, QStringLiteral("Windows Setup"));
    QTRY_COMPARE(record(), QStringLiteral("gnome-software --mode=overview"));
}

void TestDesktopControlPanel::aMissingItemIsNamedInABox()
{
    ScriptedPrompts prompts;
    prompts.expect(QStringLiteral("Add printer Wizard: none exists on this system."),
                   QStringLiteral("Vandrel"));
    DesktopControlPanel panel;
    panel.open(Member::AddPrinterWizard, {}, QStringLiteral("Add printer Wizard"));
    QCOMPARE(prompts.shown(), 0);
    QTRY_COMPARE(prompts.shown(), 1);
    QVERIFY(prompts.allShown());
}

void TestDesktopControlPanel::anItemThatTheDesktopDoesNotHaveIsNamedInABox()
{
    qputenv("XDG_CURRENT_DESKTOP", "XFCE");
    install(QStringLiteral("lxqt-admin-time"));
    ScriptedPrompts prompts;
    prompts.expect(QStringLiteral("Time/Date: none exists on this system."), QStringLiteral("Vandrel"));
    DesktopControlPanel panel;
    panel.open(Member::TimeDate, {}, QStringLiteral("Time/Date"));
    QTRY_COMPARE(prompts.shown(), 1);
    QVERIFY(record().isEmpty());
}

} // namespace vandrel::test

QTEST_MAIN(vandrel::test::TestDesktopControlPanel)
#include "TestDesktopControlPanel.moc"
