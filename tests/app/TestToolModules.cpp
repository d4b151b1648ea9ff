#include <memory>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

#include "app/ToolModules.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeDocumentFiles.h"
#include "tests/support/FakeLocalFolders.h"

using namespace vandrel;
using namespace vandrel::test;

namespace {

ToolServices someServices()
{
    const auto drives = std::make_shared<DriveView>();
    drives->setDrive('c', "/tmp");
    drives->setDrive('z', "/");
    return {drives,
            std::make_shared<FakeLocalFolders>(),
            std::make_shared<FakeDocumentFiles>(),
            [] { return std::make_unique<FakeCommonDialog>(); },
            std::make_shared<FakePrinter>(),
            nullptr};
}

} // namespace

class TestToolModules : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void everyToolIsMadeByItsModule_data()
    {
        QTest::addColumn<QString>("module");
        QTest::addColumn<QString>("window");
        for (const char *name : {"frmFile", "frmText"})
            QTest::newRow(name) << QStringLiteral("common") << QString::fromLatin1(name);
        for (const char *name : {"frmFTP", "frmPOP", "frmSend", "frmPing", "frmIP"})
            QTest::newRow(name) << QStringLiteral("internet") << QString::fromLatin1(name);
        QTest::newRow("frmPicEdit") << QStringLiteral("piceditor") << QStringLiteral("frmPicEdit");
        for (const char *name : {"frmView", "frmPic"})
            QTest::newRow(name) << QStringLiteral("pictures") << QString::fromLatin1(name);
        for (const char *name : {"frmCapture", "frmInfo", "frmRes"})
            QTest::newRow(name) << QStringLiteral("system") << QString::fromLatin1(name);
    }
    void everyToolIsMadeByItsModule()
    {
        QFETCH(QString, module);
        QFETCH(QString, window);
        const ToolModules modules{QDir(QStringLiteral(MODULE_FOLDER))};
        const std::unique_ptr<QWidget> made(modules.load(module).make(window, someServices()));
        QVERIFY(made);
        QCOMPARE(QString::fromLatin1(made->metaObject()->className()), QStringLiteral("vandrel::") + window);
    }

    void aModuleIsLoadedOnce()
    {
        const ToolModules modules{QDir(QStringLiteral(MODULE_FOLDER))};
        QCOMPARE(&modules.load(QStringLiteral("internet")), &modules.load(QStringLiteral("internet")));
    }

    void aWindowThatTheModuleDoesNotHaveIsAnError()
    {
        const ToolModules modules{QDir(QStringLiteral(MODULE_FOLDER))};
        ToolModule &internet = modules.load(QStringLiteral("internet"));
        QCOMPARE(test::numberOf([&] { internet.make(QStringLiteral("frmNone"), someServices()); }),
                 error::ObjectRequired);
    }

    void aModuleThatIsMissingOrBrokenIsNamed_data()
    {
        QTest::addColumn<QByteArray>("contents");
        QTest::newRow("missing") << QByteArray();
        QTest::newRow("no library") << QByteArray(5000, 'x');
        QTest::newRow("cut off") << QByteArray("\177ELF\2\1\1", 7);
    }
    void aModuleThatIsMissingOrBrokenIsNamed()
    {
        QFETCH(QByteArray, contents);
        const QTemporaryDir folder;
        if (!contents.isNull()) {
            QFile file(folder.filePath(QStringLiteral("vandrel-internet.so")));
            QVERIFY(file.open(QIODevice::WriteOnly));
            QCOMPARE(file.write(contents), contents.size());
        }
        const ToolModules modules{QDir(folder.path())};
        const auto failure = test::failureOf([&] { modules.load(QStringLiteral("internet")); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), error::CannotCreateObject);
        QVERIFY2(failure->text().contains(u"vandrel-internet.so"), failure->what());
    }

    void adaptersThatCannotBeLoadedAreNamed()
    {
        const QTemporaryDir folder;
        const ToolModules modules{QDir(folder.path())};
        const auto failure = test::failureOf([&] { modules.loadAdapters(); });
        QVERIFY(failure);
        QCOMPARE(failure->number(), error::CannotCreateObject);
        QVERIFY2(failure->text().contains(u"vandrel-common.so"), failure->what());
    }

    /// A launcher that is to be there at once does not load what only some tools need.
    void theProgramItselfStandsOnTheToolkitAlone()
    {
        QProcess ldd;
        ldd.start(QStringLiteral("ldd"), {QStringLiteral(PROGRAM)});
        QVERIFY(ldd.waitForFinished());
        const QByteArray libraries = ldd.readAllStandardOutput();
        QVERIFY2(libraries.contains("libQt6Widgets"), libraries.constData());
        for (const char *heavy : {"libQt6Network", "libQt6PrintSupport", "libQt6WebEngine", "libQt6Svg",
                                  "libopencv", "libjpeg", "libtiff", "libgmime", "libxml2", "libssl",
                                  "libvandrel-controls", "libxcb-shm", "libxcb-randr"})
            QVERIFY2(!libraries.contains(heavy), heavy);
    }
};

QTEST_MAIN(TestToolModules)
#include "TestToolModules.moc"
