#include <QBuffer>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>
#include <QTest>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfReader.h"
#include "platform/richtext/RtfWriter.h"
#include "runtime/RuntimeError.h"

using namespace vandrel;

namespace {

constexpr int longestComparison = 15 * 60 * 1000;
constexpr int nothingToCompareWith = 77;

QString sourceFolder()
{
    return qEnvironmentVariable("VANDREL_SOURCE_DIR");
}

// Documents of the tree, and a larger collection where one is at hand.
QStringList documents()
{
    const QString shared
        = qEnvironmentVariable("VANDREL_SHARED", sourceFolder() + QStringLiteral("/../shared"));
    QStringList files;
    for (const QString &path :
         {sourceFolder() + QStringLiteral("/tests/fuzz/corpus/rtf"),
          sourceFolder() + QStringLiteral("/docs/samples"), shared + QStringLiteral("/data/rtf")}) {
        const QDir folder(path);
        for (const QString &name : folder.entryList({QStringLiteral("*.rtf")}, QDir::Files))
            files += folder.filePath(name);
    }
    return files;
}

QByteArray contentsOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(contents) == contents.size();
}

// What is saved of a file after loading it; empty for one that cannot be loaded.
QByteArray savedAgain(const QByteArray &rtf)
{
    try {
        DocumentProgress progress;
        const LoadedDocument loaded = readRtf(rtf, progress);
        QByteArray saved;
        QBuffer buffer(&saved);
        buffer.open(QIODevice::WriteOnly);
        writeRtf(*loaded.document, buffer, [] {});
        return saved;
    } catch (const RuntimeError &) {
        return {};
    }
}

} // namespace

// An independent word processor must see in a saved file what it sees in the original.
class TestRtfOracle : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void anotherProgramSeesTheSameDocument();
};

void TestRtfOracle::anotherProgramSeesTheSameDocument()
{
    const QString python = QStandardPaths::findExecutable(QStringLiteral("python3"));
    if (python.isEmpty() || QStandardPaths::findExecutable(QStringLiteral("soffice")).isEmpty())
        QSKIP("there is no other program to compare with");
    QTemporaryDir folder;
    QVERIFY(folder.isValid());
    for (const QString &path : documents()) {
        const QByteArray original = contentsOf(path);
        const QByteArray saved = savedAgain(original);
        if (saved.isEmpty())
            continue;
        const QString name = folder.filePath(QFileInfo(path).completeBaseName());
        QVERIFY(writeFile(name + QStringLiteral(".before.rtf"), original));
        QVERIFY(writeFile(name + QStringLiteral(".after.rtf"), saved));
    }
    QProcess oracle;
    oracle.setProcessChannelMode(QProcess::MergedChannels);
    oracle.start(python,
                 {sourceFolder() + QStringLiteral("/tests/platform/richtext/oracle.py"), folder.path()});
    QVERIFY(oracle.waitForFinished(longestComparison));
    const QByteArray report = oracle.readAll();
    qInfo().noquote() << QString::fromUtf8(report);
    if (oracle.exitCode() == nothingToCompareWith)
        QSKIP("there is nothing to compare");
    QCOMPARE(oracle.exitStatus(), QProcess::NormalExit);
    QCOMPARE(oracle.exitCode(), 0);
}

QTEST_MAIN(TestRtfOracle)
#include "TestRtfOracle.moc"
