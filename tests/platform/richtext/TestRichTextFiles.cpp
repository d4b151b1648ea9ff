#include <memory>

#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QTextBlock>
#include <QTextCursor>
#include <QThread>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RichTextFiles.h"
#include "runtime/RuntimeError.h"
#include "tests/platform/filesystem/Restrictions.h"
#include "tests/platform/filesystem/SmallDisk.h"
#include "tests/runtime/FailureOf.h"

using namespace vandrel;

class TestRichTextFiles : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void whatIsSavedIsLoadedAgain();
    void everyNameIsSavedAsRichText();
    void aTextIsLoadedAsText();
    void anOldNameHidesRichText();
    void anEmptyFileIsAnEmptyText();
    void probeTellsTheSize();
    void whatCannotBeReadIsNamed_data();
    void whatCannotBeReadIsNamed();
    void aFailedSaveLeavesTheFile();
    void aFailureWhileSavingLeavesTheFile();
    void aFullDiskLeavesTheFile();
    void aSizeLimitLeavesTheFile();
    void aSavedLinkStaysALink();
    void aCancelledLoadGivesNothing();
    void loadingWorksOnAnotherThread();
    void theClipboardCarriesFormats();
    void aClipboardWithoutRichTextIsRefused();

private:
    QString native(const QString &name) const { return m_folder->filePath(name); }
    void put(const QString &name, const QByteArray &contents) const;
    QByteArray get(const QString &name) const;
    void save(const QString &name, const QTextDocument &document) const;
    /// Saves a document that has no room over the file "disk/a.rtf".
    void saveWithoutRoom() const;
    LoadedDocument load(const QString &name) const;
    static QString dos(const QString &name) { return QStringLiteral("c:\\") + name; }

    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<RichTextFiles> m_files;
};

void TestRichTextFiles::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(m_folder->isValid());
    auto drives = std::make_shared<DriveView>();
    drives->setDrive('c', m_folder->path().toUtf8());
    m_files = std::make_unique<RichTextFiles>(drives);
}

void TestRichTextFiles::put(const QString &name, const QByteArray &contents) const
{
    QFile file(native(name));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(contents), contents.size());
}

QByteArray TestRichTextFiles::get(const QString &name) const
{
    QFile file(native(name));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void TestRichTextFiles::save(const QString &name, const QTextDocument &document) const
{
    m_files->save(dos(name), document, [] {});
}

LoadedDocument TestRichTextFiles::load(const QString &name) const
{
    DocumentProgress progress;
    return m_files->load(dos(name), progress);
}

void TestRichTextFiles::whatIsSavedIsLoadedAgain()
{
    RichTextDocument document;
    QTextCharFormat bold;
    bold.setFontWeight(QFont::Bold);
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("Grüße, "), QTextCharFormat());
    cursor.insertText(QStringLiteral("世界\n"), bold);
    save(QStringLiteral("a.rtf"), document);
    const LoadedDocument loaded = load(QStringLiteral("a.rtf"));
    QCOMPARE(loaded.kind, LoadedDocument::Kind::RichText);
    QCOMPARE(loaded.notices, QStringList());
    QCOMPARE(loaded.document->toRawText(), document.toRawText());
    QVERIFY(!loaded.document->isModified());
    const QTextCharFormat last = (--loaded.document->begin().end()).fragment().charFormat();
    QCOMPARE(last.fontWeight(), int(QFont::Bold));
}

void TestRichTextFiles::everyNameIsSavedAsRichText()
{
    save(QStringLiteral("a.txt"), RichTextDocument());
    QVERIFY(get(QStringLiteral("a.txt")).startsWith("{\\rtf1"));
    QCOMPARE(load(QStringLiteral("a.txt")).kind, LoadedDocument::Kind::RichText);
}

void TestRichTextFiles::aTextIsLoadedAsText()
{
    put(QStringLiteral("a.rtf"), "{ not rich }\r\nsecond\r\n");
    const LoadedDocument loaded = load(QStringLiteral("a.rtf"));
    QCOMPARE(loaded.kind, LoadedDocument::Kind::PlainText);
    QCOMPARE(loaded.document->toRawText(), QStringLiteral("{ not rich }\u2029second\u2029"));
    QCOMPARE(loaded.notices, QStringList{QStringLiteral("Saving turns this file into rich text.")});
}

void TestRichTextFiles::anOldNameHidesRichText()
{
    put(QStringLiteral("a.doc"), " \r\n{\\rtf1 abc}");
    const LoadedDocument loaded = load(QStringLiteral("a.doc"));
    QCOMPARE(loaded.kind, LoadedDocument::Kind::RichText);
    QCOMPARE(loaded.document->toRawText(), QStringLiteral("abc"));
}

void TestRichTextFiles::anEmptyFileIsAnEmptyText()
{
    put(QStringLiteral("a.rtf"), {});
    QCOMPARE(m_files->probe(dos(QStringLiteral("a.rtf"))), 0);
    const LoadedDocument loaded = load(QStringLiteral("a.rtf"));
    QVERIFY(loaded.document && loaded.document->isEmpty());
}

void TestRichTextFiles::probeTellsTheSize()
{
    put(QStringLiteral("a.txt"), QByteArray(200'000, 'x'));
    QCOMPARE(m_files->probe(dos(QStringLiteral("a.txt"))), 200'000);
}

void TestRichTextFiles::whatCannotBeReadIsNamed_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("number");
    QTest::newRow("missing file") << dos(QStringLiteral("none.rtf")) << error::FileNotFound;
    QTest::newRow("missing folder") << dos(QStringLiteral("none\\a.rtf")) << error::PathNotFound;
    QTest::newRow("folder") << dos(QStringLiteral("folder")) << error::PathFileAccess;
    QTest::newRow("pipe") << dos(QStringLiteral("pipe")) << error::PathFileAccess;
    QTest::newRow("binary document") << dos(QStringLiteral("old.doc")) << error::InvalidFileFormat;
    QTest::newRow("no drive") << QStringLiteral("q:\\a.rtf") << error::DeviceUnavailable;
}

void TestRichTextFiles::whatCannotBeReadIsNamed()
{
    QFETCH(QString, path);
    QFETCH(int, number);
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("folder")));
    QCOMPARE(::mkfifo(native(QStringLiteral("pipe")).toUtf8().constData(), 0600), 0);
    put(QStringLiteral("old.doc"), QByteArray("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) + QByteArray(500, '\0'));
    const auto probed = test::failureOf([&] { m_files->probe(path); });
    QVERIFY(probed);
    QCOMPARE(probed->number(), number);
    DocumentProgress progress;
    const auto loaded = test::failureOf([&] { m_files->load(path, progress); });
    QVERIFY(loaded);
    QCOMPARE(loaded->number(), number);
    QCOMPARE(loaded->text(), probed->text());
    if (number != error::DeviceUnavailable)
        QVERIFY2(probed->text().contains(path), qPrintable(probed->text()));
}

void TestRichTextFiles::aFailedSaveLeavesTheFile()
{
    put(QStringLiteral("a.rtf"), "old");
    QCOMPARE(::chmod(native(QStringLiteral("a.rtf")).toUtf8().constData(), 0444), 0);
    const auto failure = test::failureOf([this] { save(QStringLiteral("a.rtf"), RichTextDocument()); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::PermissionDenied);
    QVERIFY(failure->text().contains(QStringLiteral("\"c:\\a.rtf\" could not be written")));
    QCOMPARE(get(QStringLiteral("a.rtf")), QByteArray("old"));
    const auto vanished
        = test::failureOf([this] { save(QStringLiteral("none\\a.rtf"), RichTextDocument()); });
    QVERIFY(vanished);
    QCOMPARE(vanished->number(), error::PathNotFound);
}

void TestRichTextFiles::aFailureWhileSavingLeavesTheFile()
{
    put(QStringLiteral("a.rtf"), "old");
    RichTextDocument document;
    QTextCursor(&document).insertText(QStringLiteral("a\nb\nc"));
    int calls = 0;
    const auto failure = test::failureOf([&] {
        m_files->save(dos(QStringLiteral("a.rtf")), document, [&calls] {
            if (++calls == 4)
                throw RuntimeError(error::OutOfMemory);
        });
    });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::OutOfMemory);
    QCOMPARE(get(QStringLiteral("a.rtf")), QByteArray("old"));
    QCOMPARE(QDir(m_folder->path()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("a.rtf")});
}

void TestRichTextFiles::saveWithoutRoom() const
{
    const QString path = QStringLiteral("disk/a.rtf");
    put(path, "old");
    RichTextDocument document;
    QTextCursor(&document).insertText(QString(300'000, u'x'));
    const auto failure = test::failureOf([&] { save(QStringLiteral("disk\\a.rtf"), document); });
    QVERIFY(failure);
    QCOMPARE(failure->number(), error::DiskFull);
    QVERIFY2(failure->text().contains(QStringLiteral("\"c:\\disk\\a.rtf\" could not be written")),
             qPrintable(failure->text()));
    QCOMPARE(get(path), QByteArray("old"));
    QCOMPARE(QDir(native(QStringLiteral("disk"))).entryList(QDir::Files | QDir::Hidden),
             QStringList{QStringLiteral("a.rtf")});
}

void TestRichTextFiles::aFullDiskLeavesTheFile()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("disk")));
    const test::SmallDisk disk(native(QStringLiteral("disk")).toUtf8(), "size=128k");
    if (!disk.isThere())
        QSKIP("no file system can be mounted here");
    saveWithoutRoom();
}

void TestRichTextFiles::aSizeLimitLeavesTheFile()
{
    QVERIFY(QDir(m_folder->path()).mkdir(QStringLiteral("disk")));
    const test::FileSizeLimit limit(100'000);
    saveWithoutRoom();
}

void TestRichTextFiles::aSavedLinkStaysALink()
{
    put(QStringLiteral("target.rtf"), "old");
    QCOMPARE(::symlink("target.rtf", native(QStringLiteral("link.rtf")).toUtf8().constData()), 0);
    save(QStringLiteral("link.rtf"), RichTextDocument());
    QVERIFY(QFileInfo(native(QStringLiteral("link.rtf"))).isSymLink());
    QVERIFY(get(QStringLiteral("target.rtf")).startsWith("{\\rtf1"));
}

void TestRichTextFiles::aCancelledLoadGivesNothing()
{
    put(QStringLiteral("a.rtf"), "{\\rtf1 abc}");
    put(QStringLiteral("a.txt"), "abc");
    DocumentProgress progress;
    progress.cancelled = true;
    QVERIFY(!m_files->load(dos(QStringLiteral("a.rtf")), progress).document);
    QVERIFY(!m_files->load(dos(QStringLiteral("a.txt")), progress).document);
}

void TestRichTextFiles::loadingWorksOnAnotherThread()
{
    put(QStringLiteral("a.rtf"), "{\\rtf1 {\\b abc}\\par}");
    LoadedDocument loaded;
    QThread *const here = QThread::currentThread();
    const std::unique_ptr<QThread> thread(QThread::create([&] {
        loaded = load(QStringLiteral("a.rtf"));
        loaded.document->moveToThread(here);
    }));
    thread->start();
    QVERIFY(thread->wait(60'000));
    QCOMPARE(loaded.document->thread(), here);
    QCOMPARE(loaded.document->toRawText(), QStringLiteral("abc"));
}

void TestRichTextFiles::theClipboardCarriesFormats()
{
    RichTextDocument document;
    QTextCharFormat italic;
    italic.setFontItalic(true);
    QTextCursor cursor(&document);
    cursor.insertText(QStringLiteral("plain "), QTextCharFormat());
    cursor.insertText(QStringLiteral("slanted"), italic);
    const LoadedDocument pasted = m_files->fromRtf(m_files->toRtf(document, 4, 10));
    QCOMPARE(pasted.document->toRawText(), QStringLiteral("n slan"));
    const QTextCharFormat last = (--pasted.document->begin().end()).fragment().charFormat();
    QVERIFY(last.fontItalic());
}

void TestRichTextFiles::aClipboardWithoutRichTextIsRefused()
{
    QCOMPARE(test::numberOf([this] { m_files->fromRtf("abc"); }), error::InvalidFileFormat);
    QCOMPARE(test::numberOf([this] { m_files->fromRtf({}); }), error::InvalidFileFormat);
}

QTEST_MAIN(TestRichTextFiles)
#include "TestRichTextFiles.moc"
