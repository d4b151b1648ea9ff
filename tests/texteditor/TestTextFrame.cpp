#include <QAction>
#include <QMdiArea>
#include <QMenu>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "tests/texteditor/Editor.h"

using namespace vandrel;
using namespace vandrel::test;

/// The text editor's frame: start-up, files, captions, the list of windows, what is enabled when.
class TestTextFrame : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void startsWithOneUntitledDocument();
};

void TestTextFrame::startsWithOneUntitledDocument()
{
    Editor editor;
    QVERIFY(editor.show());
    QCOMPARE(editor.frame->documents().size(), 1);
    QCOMPARE(editor.document().Caption(), QStringLiteral("Untitled 1"));
    QCOMPARE(editor.document().Tag, QStringLiteral("0"));
    QCOMPARE(editor.frame->DocCount, Integer(2));
    QCOMPARE(editor.frame->windowTitle(), QStringLiteral("Text - Untitled 1"));
}

QTEST_MAIN(TestTextFrame)
#include "TestTextFrame.moc"
