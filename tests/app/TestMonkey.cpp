#include <memory>

#include <QDesktopServices>
#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTest>

#include "controls/DriveView.h"
#include "files/frmFile.h"
#include "files/frmPic.h"
#include "files/frmView.h"
#include "internet/frmBrowse.h"
#include "internet/frmFTP.h"
#include "internet/frmIP.h"
#include "internet/frmPOP.h"
#include "internet/frmPing.h"
#include "internet/frmSend.h"
#include "launcher/Form1.h"
#include "launcher/ToolSlots.h"
#include "launcher/frmPanel.h"
#include "piceditor/frmPicEdit.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFileOperations.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/imaging/control/EngineImage.h"
#include "platform/pictures/ThreadedDecoders.h"
#include "platform/richtext/RichTextFiles.h"
#include "system/frmCapture.h"
#include "system/frmInfo.h"
#include "system/frmRes.h"
#include "tests/app/Monkey.h"
#include "tests/support/AnsweringPrompts.h"
#include "tests/support/FakeChangeRes.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeFTPClient.h"
#include "tests/support/FakeMyIP.h"
#include "tests/support/FakePOPMail.h"
#include "tests/support/FakePing.h"
#include "tests/support/FakeScreenCapture.h"
#include "tests/support/FakeSmtp.h"
#include "tests/support/FakeSystemInfo.h"
#include "tests/support/FakeWebBrowser.h"
#include "tests/support/ScriptedPrompts.h"
#include "texteditor/frmText.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

/// A computer with one drive.
class OneDrive final : public DriveTable
{
public:
    OneDrive(DriveView &view, const QString &folder) { view.setDrive('c', QFile::encodeName(folder)); }
    void follow() override { }
};

/// A file dialog that is answered at random.
class RandomDialog final : public CommonDialog
{
public:
    explicit RandomDialog(Monkey &monkey) : m_monkey(monkey) { }
    void ShowOpen(QWidget *) override { choose(); }
    void ShowSave(QWidget *) override { choose(); }

private:
    void choose()
    {
        const QString chosen = m_monkey.text();
        if (chosen.startsWith(u"c:\\"))
            FileName = chosen;
    }

    Monkey &m_monkey;
};

/// Settings of a desktop that has none.
class NoControlPanel final : public ControlPanel
{
public:
    void open(Member, std::optional<std::int32_t>, const QString &) override { }
};

/// Every window of the suite on the real adapters of files, documents and pictures in a folder of the test's, and on
/// fakes of all that reaches the network, the screen or the desktop.
class SuiteForMonkeys
{
public:
    SuiteForMonkeys(Monkey &monkey, const QString &folder) : m_monkey(monkey), m_drive(*m_drives, folder)
    {
        addTools();
        for (const QString &name :
             {QStringLiteral("frmBrowse"), QStringLiteral("frmPOP"), QStringLiteral("frmSend"),
              QStringLiteral("frmFTP"), QStringLiteral("frmPing"), QStringLiteral("frmIP"),
              QStringLiteral("frmFile"), QStringLiteral("frmRes"), QStringLiteral("frmInfo"),
              QStringLiteral("frmView"), QStringLiteral("frmPicEdit"), QStringLiteral("frmCapture"),
              QStringLiteral("frmText")})
            m_monkey.windows[name] = [this, name] { guarded([this, name] { m_tools[name].show(); }); };
        m_monkey.windows[QStringLiteral("Form1")] = [this] { guarded([this] { m_about.show(); }); };
        m_monkey.windows[QStringLiteral("frmPanel")] = [this] { guarded([this] { m_launcher.show(); }); };
    }

private:
    void addTools()
    {
        add(QStringLiteral("frmBrowse"), [this] { return new frmBrowse(told<FakeWebBrowser>()); });
        add(QStringLiteral("frmPOP"), [this] { return new frmPOP(told<FakePOPMail>(), m_documents); });
        add(QStringLiteral("frmSend"),
            [this] { return new frmSend(told<FakeSmtp>(), [this] { return dialog(); }); });
        add(QStringLiteral("frmFTP"), [this] { return new frmFTP(told<FakeFTPClient>(), m_folders); });
        add(QStringLiteral("frmPing"), [this] { return new frmPing(told<FakePing>()); });
        add(QStringLiteral("frmIP"), [this] { return new frmIP(told<FakeMyIP>()); });
        add(QStringLiteral("frmFile"), [this] { return new frmFile(m_folders, files()); });
        add(QStringLiteral("frmRes"), [this] { return new frmRes(told<FakeChangeRes>()); });
        add(QStringLiteral("frmInfo"),
            [this] { return new frmInfo(std::make_unique<FakeSystemInfo>(m_asked)); });
        add(QStringLiteral("frmView"), [this] {
            return new frmView(
                {m_folders, files(), std::make_shared<ThreadedDecoders>(m_drives), &m_thumbnails});
        });
        add(QStringLiteral("frmPicEdit"), [this] {
            return new frmPicEdit({image(), image(), dialog(), dialog(), m_drives});
        });
        add(QStringLiteral("frmCapture"),
            [this] { return new frmCapture(told<FakeScreenCapture>(), dialog()); });
        add(QStringLiteral("frmText"), [this] {
            TextEditorControls controls;
            controls.cd1 = dialog();
            controls.cd2 = dialog();
            controls.c1 = std::make_unique<FakeColorDialog>();
            controls.printer = std::make_unique<FakePrinter>();
            controls.files = m_documents;
            return new frmText(std::move(controls));
        });
    }

    void add(const QString &name, const WindowSlot::Factory &factory) { m_tools.setFactory(name, factory); }

    /// A fake that the monkey makes tell of events.
    template<typename Fake>
    std::unique_ptr<Fake> told()
    {
        auto fake = std::make_unique<Fake>();
        m_monkey.controls += fake.get();
        return fake;
    }

    std::unique_ptr<CommonDialog> dialog() { return std::make_unique<RandomDialog>(m_monkey); }
    std::unique_ptr<FileOperations> files() { return std::make_unique<NativeFileOperations>(m_drives); }
    std::unique_ptr<CImage> image()
    {
        return std::make_unique<EngineImage>(EngineServices{m_drives, std::make_shared<FakePrinter>(), {}});
    }

    Monkey &m_monkey;
    std::shared_ptr<DriveView> m_drives = std::make_shared<DriveView>();
    OneDrive m_drive;
    std::shared_ptr<NativeFolders> m_folders = std::make_shared<NativeFolders>(m_drives, m_drive);
    std::shared_ptr<RichTextFiles> m_documents = std::make_shared<RichTextFiles>(m_drives);
    QStringList m_asked;
    ToolSlots m_tools;
    WindowSlot m_thumbnails{[] { return new frmPic; }};
    WindowSlot m_launcher{[this] { return new frmPanel(m_tools, std::make_unique<NoControlPanel>()); }};
    WindowSlot m_about{[this] { return new Form1(m_launcher); }};
};

void write(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

/// Some files for every tool.
void fill(const QDir &folder)
{
    write(folder.filePath(QStringLiteral("letter.rtf")),
          "{\\rtf1\\ansi Dear {\\b Anna},\\par the beans are in.\\par}");
    write(folder.filePath(QStringLiteral("notes.txt")), QByteArray("one line and another\r\n").repeated(500));
    write(folder.filePath(QStringLiteral("broken.bmp")), "BM and nothing else");
    QImage picture(320, 240, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    QVERIFY(picture.save(folder.filePath(QStringLiteral("garden.bmp"))));
    QVERIFY(picture.save(folder.filePath(QStringLiteral("garden.jpg"))));
    QVERIFY(folder.mkpath(QStringLiteral("Photographs/Harvest")));
    QVERIFY(picture.save(folder.filePath(QStringLiteral("Photographs/beans.jpg"))));
}

} // namespace

/// All windows at once in the hands of somebody who does anything at all.
class TestMonkey : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        // A link that is clicked stays within the test.
        for (const QString &scheme : m_schemes)
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    void cleanupTestCase()
    {
        for (const QString &scheme : m_schemes)
            QDesktopServices::unsetUrlHandler(scheme);
    }

    void open(const QUrl &) { }

    /// VANDREL_MONKEY_STEPS and VANDREL_MONKEY_SEED give a longer or another run.
    void nothingThatAPersonCanDoEndsTheProgram_data()
    {
        QTest::addColumn<quint32>("seed");
        const int given = qEnvironmentVariableIntValue("VANDREL_MONKEY_SEED");
        for (const int seed : given ? QList<int>{given} : QList<int>{1, 2, 3})
            QTest::addRow("seed %d", seed) << static_cast<quint32>(seed);
    }
    void nothingThatAPersonCanDoEndsTheProgram()
    {
        QFETCH(quint32, seed);
        const QTemporaryDir home;
        fill(QDir(home.path()));
        Monkey monkey(seed);
        AnsweringPrompts prompts;
        prompts.answer = [&monkey](const MessageBoxRequest &request) {
            if (request.buttons == Buttons::OkOnly)
                return Answer::Ok;
            return monkey.below(2) == 0 ? Answer::Yes : Answer::No;
        };
        prompts.type = [&monkey] { return monkey.text(); };
        const ProgramEndSpy ends;
        SuiteForMonkeys suite(monkey, home.path());
        monkey.run(qMax(1500, qEnvironmentVariableIntValue("VANDREL_MONKEY_STEPS")));
        qInfo() << monkey.taken << prompts.shown.size() << "boxes";
        QVERIFY(monkey.taken.value(QStringLiteral("click")) > 0);
        QVERIFY(monkey.taken.value(QStringLiteral("event")) > 0);
    }

private:
    const QStringList m_schemes{QStringLiteral("http"), QStringLiteral("https"), QStringLiteral("mailto"),
                                QStringLiteral("file"), QStringLiteral("ftp")};
};

QTEST_MAIN(TestMonkey)
#include "TestMonkey.moc"
