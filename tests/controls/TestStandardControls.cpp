#include <QClipboard>
#include <QGuiApplication>
#include <QMdiSubWindow>
#include <QMimeData>
#include <QRandomGenerator>
#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>
#include <QWheelEvent>

#include "controls/Clipboard.h"
#include "controls/ComboBox.h"
#include "controls/Label.h"
#include "controls/ListBox.h"
#include "controls/MdiArea.h"
#include "controls/RgbLong.h"
#include "controls/TextBox.h"
#include "runtime/RuntimeError.h"
#include "tests/runtime/FailureOf.h"

using namespace Qt::StringLiterals;
using namespace vandrel;

/// The standard controls whose behaviour the windows rely on: lists, labels, the frame's area, the clipboard.
class TestStandardControls : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void aListStartsWithNothingChosen();
    void listIndexRaisesClickEachTime();
    void listIndexOutsideTheListIsAnError();
    void theUsersChoiceRaisesClick();
    void theWheelChoosesOnlyWithTheFocus();

    void aListBoxStartsWithNothingSelected();
    void toolTipsOfAListBoxAreNoMarkup();
    void removingFromAListBoxSelectsNothingElse();
    void removingWhatAListBoxDoesNotHaveIsAnError();
    void theFocusAloneSelectsNothing();
    void anIndexOutsideAListBoxIsAnError();

    void everyChangeOfATextBoxRaisesChangeOnce();
    void aLookOfATextBoxIsNoChange();
    void lineBreaksOfATextBox_data();
    void lineBreaksOfATextBox();
    void enterMakesALineBreakWithAnyModifier();
    void theTextIsInStepWithTheDocument();
    void aWordWithoutEndIsShownAtOnce();
    void appendingLeavesTheCaretAndTheSelection();

    void aDoubleClickOnALabelRaisesClickFirst();
    void lettingGoOutsideIsNoClick();
    void otherButtonsAreNoClicks();
    void foreColorIsAnRgbLong();

    void theClipboardTakesPlainTextOnly();
    void aClipboardWithoutTextGivesNone();

    void tilingUpToThreeWindowsAboveEachOther_data();
    void tilingUpToThreeWindowsAboveEachOther();
    void tilingLeavesMinimisedWindowsAlone();
    void arrangingNoWindowIsHarmless();
    void newWindowsDoNotHideEachOther();
};

namespace {

void fill(ComboBox &list)
{
    for (const QString &item : {u"a"_s, u"b"_s, u"c"_s})
        list.AddItem(item);
}

} // namespace

void TestStandardControls::aListStartsWithNothingChosen()
{
    ComboBox list;
    const QSignalSpy clicks(&list, &ComboBox::Click);
    fill(list);
    QCOMPARE(list.ListIndex(), -1);
    QCOMPARE(list.Text(), QString());
    QCOMPARE(list.ListCount(), 3);
    QCOMPARE(list.List(2), u"c"_s);
    QCOMPARE(list.List(3), QString());
    QCOMPARE(list.List(-1), QString());
    QCOMPARE(clicks.count(), 0);
}

void TestStandardControls::listIndexRaisesClickEachTime()
{
    ComboBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ComboBox::Click);
    list.setListIndex(1);
    QCOMPARE(list.Text(), u"b"_s);
    QCOMPARE(clicks.count(), 1);
    list.setListIndex(1);
    QCOMPARE(clicks.count(), 2);
    list.setListIndex(-1);
    QCOMPARE(clicks.count(), 3);
    QCOMPARE(list.Text(), QString());
}

void TestStandardControls::listIndexOutsideTheListIsAnError()
{
    ComboBox list;
    fill(list);
    const QSignalSpy clicks(&list, &ComboBox::Click);
    QCOMPARE(test::numberOf([&] { list.setListIndex(3); }), error::InvalidPropertyValue);
    QCOMPARE(test::numberOf([&] { list.setListIndex(-2); }), error::InvalidPropertyValue);
    QCOMPARE(clicks.count(), 0);
}

void TestStandardControls::theUsersChoiceRaisesClick()
{
    ComboBox list;
    fill(list);
    list.show();
    const QSignalSpy clicks(&list, &ComboBox::Click);
    QTest::keyClick(&list, Qt::Key_Down);
    QCOMPARE(list.ListIndex(), 0);
    QCOMPARE(clicks.count(), 1);
}

void TestStandardControls::theWheelChoosesOnlyWithTheFocus()
{
    ComboBox list;
    fill(list);
    list.show();
    list.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&list));
    const auto turn = [&list] {
        QWheelEvent event(QPointF(5, 5), list.mapToGlobal(QPointF(5, 5)), QPoint(), QPoint(0, -120),
                          Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&list, &event);
    };
    list.clearFocus();
    turn();
    QCOMPARE(list.ListIndex(), -1);
    list.setFocus();
    turn();
    QCOMPARE(list.ListIndex(), 0);
}

void TestStandardControls::aListBoxStartsWithNothingSelected()
{
    ListBox list;
    for (const QString &item : {u"a"_s, u"b"_s})
        list.AddItem(item);
    QCOMPARE(list.ListCount(), 2);
    QCOMPARE(list.ListIndex(), -1);
    QCOMPARE(list.List(1), u"b"_s);
    QCOMPARE(list.List(2), QString());
    QCOMPARE(list.List(-1), QString());
    list.setListIndex(1);
    QCOMPARE(list.ListIndex(), 1);
    list.AddItem(u"c"_s);
    QCOMPARE(list.ListIndex(), 1);
    list.setListIndex(-1);
    QCOMPARE(list.ListIndex(), -1);
}

void TestStandardControls::toolTipsOfAListBoxAreNoMarkup()
{
    ListBox list;
    const QStringList names{u"a.txt"_s, u"<img src='x'>"_s, u"<b>a</b>  b"_s};
    list.addItems(names);
    for (int row = 0; row < names.size(); ++row) {
        const QString tip = list.model()->index(row, 0).data(Qt::ToolTipRole).toString();
        QTextDocument shown;
        shown.setHtml(tip);
        QCOMPARE(shown.toPlainText(), names.at(row));
    }
}

void TestStandardControls::removingFromAListBoxSelectsNothingElse()
{
    ListBox list;
    for (const QString &item : {u"a"_s, u"b"_s, u"c"_s})
        list.AddItem(item);
    list.setListIndex(1);
    list.RemoveItem(1);
    QCOMPARE(list.ListIndex(), -1);
    QCOMPARE(list.List(1), u"c"_s);
    list.setListIndex(1);
    list.RemoveItem(0);
    QCOMPARE(list.ListIndex(), 0);
    QCOMPARE(list.List(0), u"c"_s);
}

void TestStandardControls::removingWhatAListBoxDoesNotHaveIsAnError()
{
    ListBox list;
    QCOMPARE(test::numberOf([&] { list.RemoveItem(-1); }), error::InvalidProcedureCall);
    QCOMPARE(test::numberOf([&] { list.RemoveItem(0); }), error::InvalidProcedureCall);
}

void TestStandardControls::theFocusAloneSelectsNothing()
{
    ListBox list;
    list.AddItem(u"a"_s);
    list.show();
    list.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&list));
    list.clearFocus();
    list.setFocus(Qt::TabFocusReason);
    QCOMPARE(list.ListIndex(), -1);
    QTest::keyClick(&list, Qt::Key_Space);
    QCOMPARE(list.ListIndex(), 0);
}

void TestStandardControls::anIndexOutsideAListBoxIsAnError()
{
    ListBox list;
    list.AddItem(u"a"_s);
    QCOMPARE(test::numberOf([&] { list.setListIndex(1); }), error::InvalidPropertyValue);
    QCOMPARE(test::numberOf([&] { list.setListIndex(-2); }), error::InvalidPropertyValue);
    QCOMPARE(list.ListIndex(), -1);
}

void TestStandardControls::everyChangeOfATextBoxRaisesChangeOnce()
{
    TextBox box;
    QStringList texts;
    connect(&box, &TextBox::Change, &box, [&] { texts.append(box.text()); });
    box.setText(u"one\r\ntwo"_s);
    box.moveCursor(QTextCursor::End);
    QTest::keyClicks(&box, u"ab"_s);
    box.undo();
    box.append(u"!"_s);
    QCOMPARE(texts,
             QStringList(
                 {u"one\r\ntwo"_s, u"one\r\ntwoa"_s, u"one\r\ntwoab"_s, u"one\r\ntwo"_s, u"one\r\ntwo!"_s}));
}

void TestStandardControls::aLookOfATextBoxIsNoChange()
{
    TextBox box;
    box.setText(u"text"_s);
    const QSignalSpy changes(&box, &TextBox::Change);
    QFont larger = box.font();
    larger.setPointSize(30);
    box.setFont(larger);
    box.selectAll();
    box.moveCursor(QTextCursor::End);
    box.setReadOnly(true);
    QCOMPARE(changes.count(), 0);
}

void TestStandardControls::lineBreaksOfATextBox_data()
{
    QTest::addColumn<QString>("set");
    QTest::addColumn<QString>("read");
    QTest::newRow("empty") << QString() << QString();
    QTest::newRow("CR LF") << u"a\r\n\r\nb\r\n"_s << u"a\r\n\r\nb\r\n"_s;
    QTest::newRow("LF") << u"a\n\nb\n"_s << u"a\r\n\r\nb\r\n"_s;
    QTest::newRow("CR") << u"a\rb"_s << u"a\r\nb"_s;
    QTest::newRow("line separator") << u"a\u2028b"_s << u"a\u2028b"_s;
    QTest::newRow("no-break space") << u"5\u00A0000"_s << u"5\u00A0000"_s;
    QTest::newRow("markup") << u"<b>a</b>\t&amp;"_s << u"<b>a</b>\t&amp;"_s;
}

void TestStandardControls::lineBreaksOfATextBox()
{
    QFETCH(QString, set);
    QFETCH(QString, read);
    TextBox box;
    box.setText(set);
    QCOMPARE(box.text(), read);
    TextBox log;
    log.append(set);
    QCOMPARE(log.text(), read);
}

void TestStandardControls::enterMakesALineBreakWithAnyModifier()
{
    TextBox box;
    QTest::keyClicks(&box, u"a"_s);
    QTest::keyClick(&box, Qt::Key_Return, Qt::ShiftModifier);
    QTest::keyClicks(&box, u"b"_s);
    QTest::keyClick(&box, Qt::Key_Enter, Qt::KeypadModifier);
    QCOMPARE(box.text(), u"a\r\nb\r\n"_s);
}

// Many changes of every kind, always the same ones.
void TestStandardControls::theTextIsInStepWithTheDocument()
{
    const QStringList pieces{QString(), u"x"_s, u"\r\n"_s, u"one\ntwo\n\n"_s, u"\u2028 \u00A0\t"_s, u"\n"_s};
    TextBox box;
    QRandomGenerator random(4711);
    const auto any = [&random](qsizetype bound) { return static_cast<int>(random.bounded(bound)); };
    for (int step = 0; step < 1500; ++step) {
        const QString &piece = pieces[any(pieces.size())];
        QTextCursor cursor(box.document());
        cursor.setPosition(any(box.document()->characterCount()));
        cursor.setPosition(any(box.document()->characterCount()), QTextCursor::KeepAnchor);
        switch (any(12)) {
        case 0:
            box.undo();
            break;
        case 1:
            box.redo();
            break;
        case 2:
            box.append(piece);
            break;
        case 3:
            if (step % 10 == 0)
                box.setText(piece.repeated(5));
            break;
        case 4:
            cursor.removeSelectedText();
            break;
        case 5:
            cursor.beginEditBlock();
            cursor.insertText(piece);
            cursor.movePosition(QTextCursor::Start);
            cursor.insertText(piece);
            cursor.deleteChar();
            cursor.endEditBlock();
            break;
        default:
            cursor.insertText(piece);
        }
        QString expected = box.document()->toRawText();
        expected.replace(QChar::ParagraphSeparator, u"\r\n"_s);
        QCOMPARE(box.text(), expected);
    }
}

void TestStandardControls::aWordWithoutEndIsShownAtOnce()
{
    TextBox box;
    box.show();
    const QString endless = u"x"_s.repeated(100'000);
    box.setText(endless);
    QCOMPARE(box.text(), endless);
    QCOMPARE(box.wordWrapMode(), QTextOption::WrapAnywhere);
    box.setText(u"short words"_s);
    QCOMPARE(box.wordWrapMode(), QTextOption::WrapAtWordBoundaryOrAnywhere);
    box.append(u' ' + endless);
    QCOMPARE(box.wordWrapMode(), QTextOption::WrapAnywhere);
}

void TestStandardControls::appendingLeavesTheCaretAndTheSelection()
{
    TextBox box;
    box.setText(u"one two"_s);
    box.moveCursor(QTextCursor::Start);
    box.moveCursor(QTextCursor::EndOfWord, QTextCursor::KeepAnchor);
    box.append(u" three\r\n"_s);
    QCOMPARE(box.textCursor().selectedText(), u"one"_s);
    QCOMPARE(box.text(), u"one two three\r\n"_s);
}

void TestStandardControls::aDoubleClickOnALabelRaisesClickFirst()
{
    Label label(u" A"_s);
    label.resize(30, 30);
    QStringList events;
    connect(&label, &Label::Click, &label, [&] { events.append(u"Click"_s); });
    connect(&label, &Label::DblClick, &label, [&] { events.append(u"DblClick"_s); });
    QTest::mouseClick(&label, Qt::LeftButton);
    QTest::mouseDClick(&label, Qt::LeftButton);
    QTest::mouseRelease(&label, Qt::LeftButton);
    QCOMPARE(events, QStringList({u"Click"_s, u"DblClick"_s}));
}

void TestStandardControls::lettingGoOutsideIsNoClick()
{
    Label label(u" A"_s);
    label.resize(30, 30);
    const QSignalSpy clicks(&label, &Label::Click);
    QTest::mousePress(&label, Qt::LeftButton, {}, QPoint(5, 5));
    QTest::mouseRelease(&label, Qt::LeftButton, {}, QPoint(50, 5));
    QCOMPARE(clicks.count(), 0);
}

void TestStandardControls::otherButtonsAreNoClicks()
{
    Label label(u" A"_s);
    label.resize(30, 30);
    const QSignalSpy clicks(&label, &Label::Click);
    QTest::mouseClick(&label, Qt::RightButton);
    QCOMPARE(clicks.count(), 0);
}

void TestStandardControls::foreColorIsAnRgbLong()
{
    Label label(u" A"_s);
    label.setForeColor(0x030201);
    QCOMPARE(label.ForeColor(), 0x030201);
    QCOMPARE(label.palette().color(label.foregroundRole()), QColor(1, 2, 3));
    QCOMPARE(rgbLongOf(QColor(1, 2, 3)), 0x030201);
    QCOMPARE(colorOf(0x00FF8040), QColor(0x40, 0x80, 0xFF));
}

void TestStandardControls::theClipboardTakesPlainTextOnly()
{
    Clipboard::SetText(u"a\r\nb"_s);
    QCOMPARE(QGuiApplication::clipboard()->text(), u"a\nb"_s);
    QCOMPARE(Clipboard::GetText(Clipboard::PlainText), u"a\r\nb"_s);
    QGuiApplication::clipboard()->setText(u"a\r\nb\rc\nd"_s);
    QCOMPARE(Clipboard::GetText(), u"a\r\nb\r\nc\r\nd"_s);
    QCOMPARE(test::numberOf([] { Clipboard::SetText(u"x"_s, 2); }), error::InvalidProcedureCall);
    QCOMPARE(test::numberOf([] { Clipboard::GetText(0); }), error::InvalidProcedureCall);
}

void TestStandardControls::aClipboardWithoutTextGivesNone()
{
    auto *data = new QMimeData;
    data->setData(u"image/png"_s, "x");
    QGuiApplication::clipboard()->setMimeData(data);
    QCOMPARE(Clipboard::GetText(), QString());
}

void TestStandardControls::tilingUpToThreeWindowsAboveEachOther_data()
{
    QTest::addColumn<int>("windows");
    QTest::addColumn<QList<int>>("rowsOfColumns");
    QTest::newRow("one") << 1 << QList<int>{1};
    QTest::newRow("two") << 2 << QList<int>{2};
    QTest::newRow("three") << 3 << QList<int>{3};
    QTest::newRow("four") << 4 << QList<int>{2, 2};
    QTest::newRow("five") << 5 << QList<int>{2, 3};
    QTest::newRow("nine") << 9 << QList<int>{3, 3, 3};
    QTest::newRow("ten") << 10 << QList<int>{3, 3, 4};
}

void TestStandardControls::tilingUpToThreeWindowsAboveEachOther()
{
    QFETCH(const int, windows);
    QFETCH(const QList<int>, rowsOfColumns);
    MdiArea area;
    area.resize(1200, 1600);
    area.show();
    for (int count = 0; count < windows; ++count)
        area.addChild(new QWidget);
    area.Arrange(MdiArea::Arrangement::TileHorizontal);
    QMap<int, int> rows;
    QRegion covered;
    for (const QMdiSubWindow *child : area.subWindowList()) {
        ++rows[child->x()];
        QVERIFY(!covered.intersects(child->geometry()));
        covered += child->geometry();
    }
    QCOMPARE(rows.values(), rowsOfColumns);
    QCOMPARE(covered.boundingRect(), area.viewport()->rect());
}

void TestStandardControls::tilingLeavesMinimisedWindowsAlone()
{
    MdiArea area;
    area.resize(800, 600);
    area.show();
    QMdiSubWindow *first = area.addChild(new QWidget);
    QMdiSubWindow *second = area.addChild(new QWidget);
    first->showMinimized();
    area.Arrange(MdiArea::Arrangement::TileHorizontal);
    QVERIFY(first->isMinimized());
    QCOMPARE(second->geometry(), area.viewport()->rect());
    area.Arrange(MdiArea::Arrangement::Cascade);
    QVERIFY(first->isMinimized());
}

void TestStandardControls::arrangingNoWindowIsHarmless()
{
    MdiArea area;
    area.show();
    area.Arrange(MdiArea::Arrangement::TileHorizontal);
    area.Arrange(MdiArea::Arrangement::Cascade);
    QVERIFY(area.subWindowList().isEmpty());
}

void TestStandardControls::newWindowsDoNotHideEachOther()
{
    MdiArea area;
    area.resize(900, 700);
    // One added before the area is seen gets its place when it is.
    area.addChild(new QWidget);
    area.show();
    area.addChild(new QWidget);
    const QList<QMdiSubWindow *> children = area.subWindowList();
    QCOMPARE(children.at(0)->pos(), QPoint(0, 0));
    QVERIFY(children.at(1)->x() > 0);
    QCOMPARE(children.at(1)->size(), children.at(0)->size());
    for (int count = 0; count < 30; ++count)
        area.addChild(new QWidget);
    for (const QMdiSubWindow *child : area.subWindowList())
        QVERIFY(area.viewport()->rect().contains(child->geometry()));
}

QTEST_MAIN(TestStandardControls)
#include "TestStandardControls.moc"
