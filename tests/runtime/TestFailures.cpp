#include <QProcess>
#include <QTest>

namespace {

struct End {
    QProcess::ExitStatus manner = QProcess::CrashExit;
    int status = -1;
    QStringList output;
    QString errors;
};

constexpr int patience = 60'000; // milliseconds

// Runs the program that fails in the named way to its end.
End run(const QString &way)
{
    QProcess program;
    program.start(QStringLiteral(FAILING_PROGRAM), {way});
    if (!program.waitForFinished(patience)) {
        program.kill();
        program.waitForFinished();
    }
    const QString output = QString::fromUtf8(program.readAllStandardOutput());
    return {program.exitStatus(), program.exitCode(), output.split(u'\n', Qt::SkipEmptyParts),
            QString::fromUtf8(program.readAllStandardError())};
}

} // namespace

class TestFailures : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void endInOneBox_data();
    void endInOneBox();
    void withoutABoxAreWrittenOut_data();
    void withoutABoxAreWrittenOut();
    void anEndRunsNoUnloadHandler();
};

void TestFailures::endInOneBox_data()
{
    const QString overflow = QStringLiteral("box [Vandrel] Run-time error '6':||Overflow");
    const QString memory = QStringLiteral("box [Vandrel] Run-time error '7':||Out of memory");
    const QString internal = QStringLiteral("box [Vandrel] Run-time error '51':||Internal error");
    const QString unloading = QStringLiteral("unloading");
    QTest::addColumn<QStringList>("output");
    QTest::addRow("slot") << QStringList{overflow};
    QTest::addRow("own-text") << QStringList{
        QStringLiteral("box [Vandrel] Run-time error '61':||No room for letter.rtf.")};
    QTest::addRow("bad-alloc") << QStringList{memory};
    QTest::addRow("too-much-memory") << QStringList{memory};
    QTest::addRow("exception") << QStringList{internal + QStringLiteral(": broken")};
    QTest::addRow("non-standard") << QStringList{internal};
    QTest::addRow("timer") << QStringList{overflow};
    QTest::addRow("timer-behind-box") << QStringList{overflow};
    QTest::addRow("control-event") << QStringList{overflow};
    QTest::addRow("show") << QStringList{overflow};
    QTest::addRow("close") << QStringList{unloading, overflow};
    QTest::addRow("unguarded-slot") << QStringList{overflow};
    QTest::addRow("unguarded-close") << QStringList{unloading, overflow};
    QTest::addRow("box-behind-error-box") << QStringList{overflow};
    QTest::addRow("failure-behind-error-box") << QStringList{overflow};
    QTest::addRow("event-behind-error-box") << QStringList{overflow};
    QTest::addRow("worker") << QStringList{overflow};
}

// The end is the status 1, never an abort, and nothing runs after it.
void TestFailures::endInOneBox()
{
    QFETCH(const QStringList, output);
    const End end = run(QString::fromUtf8(QTest::currentDataTag()));
    QCOMPARE(end.output, output);
    QVERIFY2(end.manner == QProcess::NormalExit, qPrintable(end.errors));
    QCOMPARE(end.status, 1);
}

void TestFailures::withoutABoxAreWrittenOut_data()
{
    QTest::addColumn<QString>("way");
    QTest::addRow("before there is an application") << QStringLiteral("no-application");
    QTest::addRow("when the box itself fails") << QStringLiteral("no-box");
}

void TestFailures::withoutABoxAreWrittenOut()
{
    QFETCH(const QString, way);
    const End end = run(way);
    QCOMPARE(end.output, QStringList());
    QVERIFY2(end.errors.contains(u"Run-time error '6': Overflow"), qPrintable(end.errors));
    QVERIFY(end.manner == QProcess::NormalExit);
    QCOMPARE(end.status, 1);
}

void TestFailures::anEndRunsNoUnloadHandler()
{
    const End end = run(QStringLiteral("end"));
    QCOMPARE(end.output, QStringList());
    QVERIFY(end.manner == QProcess::NormalExit);
    QCOMPARE(end.status, 0);
}

QTEST_GUILESS_MAIN(TestFailures)
#include "TestFailures.moc"
