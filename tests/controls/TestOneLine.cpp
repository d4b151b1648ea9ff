#include <QApplication>
#include <QClipboard>
#include <QLineEdit>
#include <QSignalSpy>
#include <QTest>

#include "controls/OneLine.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// Boxes that hold one line, whatever is pasted into them.
class TestOneLine : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void texts_data();
    void texts();
    void pastedTextsStayOnOneLine();
    void assignedTextsStayOnOneLine();
    void typingIsLeftAlone();
};

void TestOneLine::texts_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("joined");
    QTest::newRow("one line") << u"  a, b \t"_s << u"  a, b \t"_s;
    QTest::newRow("LF") << u"a\nb"_s << u"a, b"_s;
    QTest::newRow("CR LF") << u"a\r\nb\r\nc"_s << u"a, b, c"_s;
    QTest::newRow("empty lines and blanks") << u"a \n\n \t\n b"_s << u"a, b"_s;
    QTest::newRow("at the ends") << u"\r\na\n"_s << u"a"_s;
    QTest::newRow("commas there already") << u"a,\nb;\nc"_s << u"a, b; c"_s;
    QTest::newRow("ends of lines of Unicode") << u"a\u2028b\u2029c\u0085d\ve\ff"_s << u"a, b, c, d, e, f"_s;
    QTest::newRow("NUL") << QString(u"a\0b"_s) << u"a, b"_s;
    QTest::newRow("nothing else") << u"\r\n\n"_s << QString();
    QTest::newRow("nothing") << QString() << QString();
}

void TestOneLine::texts()
{
    QFETCH(QString, text);
    QTEST(onOneLine(text, u", "_s), "joined");
}

void TestOneLine::pastedTextsStayOnOneLine()
{
    QLineEdit box;
    keepOnOneLine(&box, u", "_s);
    box.setText(u"<>"_s);
    box.setCursorPosition(1);
    QSignalSpy changes(&box, &QLineEdit::textChanged);
    QApplication::clipboard()->setText(u"a@x\r\nb@x\r\n"_s);
    box.paste();
    QCOMPARE(box.text(), u"<a@x, b@x, >"_s);
    QCOMPARE(changes.count(), 1);
    QCOMPARE(changes.first().first().toString(), box.text());
    QCOMPARE(box.text().mid(box.cursorPosition()), u">"_s);
}

void TestOneLine::assignedTextsStayOnOneLine()
{
    QLineEdit box;
    keepOnOneLine(&box, u" "_s);
    QSignalSpy changes(&box, &QLineEdit::textChanged);
    box.setText(u"a\nb"_s);
    QCOMPARE(box.text(), u"a b"_s);
    QCOMPARE(changes.count(), 1);
}

void TestOneLine::typingIsLeftAlone()
{
    QLineEdit box;
    keepOnOneLine(&box, u" "_s);
    QTest::keyClicks(&box, u" a  b "_s);
    QCOMPARE(box.text(), u" a  b "_s);
    QVERIFY(box.hasAcceptableInput());
    box.undo();
    QVERIFY(box.text() != u" a  b "_s);
}

QTEST_MAIN(TestOneLine)
#include "TestOneLine.moc"
