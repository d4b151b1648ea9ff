#include <functional>
#include <memory>

#include <QAccessible>
#include <QApplication>
#include <QClipboard>
#include <QDialog>
#include <QDialogButtonBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>
#include <QTimer>

#include "runtime/EventGate.h"
#include "runtime/Prompts.h"

using namespace vandrel;

namespace {

// Does `action` to the box that opens next, and sees to it that the box ends.
void whenBoxOpens(std::function<void(QDialog &)> action)
{
    QTimer::singleShot(0, qApp, [action = std::move(action)] {
        const QPointer<QDialog> box = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (!box) {
            QTest::qFail("No box is open.", __FILE__, __LINE__);
            return;
        }
        box->activateWindow();
        if (!QTest::qWaitFor([&box] { return QApplication::activeWindow() == box; }))
            QTest::qFail("The box does not become active.", __FILE__, __LINE__);
        action(*box);
        if (QTest::qWaitFor([&box] { return !box || !box->isVisible(); }))
            return;
        QTest::qFail("The box is still open.", __FILE__, __LINE__);
        box->reject();
    });
}

void pressKey(QDialog &box, Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
{
    QWidget *const focused = box.focusWidget();
    QTest::keyClick(focused ? focused : &box, key, modifiers);
}

QPushButton *buttonOf(const QDialog &box, QDialogButtonBox::StandardButton button)
{
    return box.findChild<QDialogButtonBox *>()->button(button);
}

QString shownText(const QDialog &box)
{
    if (const auto *const view = box.findChild<QPlainTextEdit *>(QStringLiteral("text")))
        return view->toPlainText();
    return box.findChild<QLabel *>(QStringLiteral("text"))->text();
}

bool isOnScreen(const QDialog &box)
{
    const QSize available = box.screen()->availableSize();
    return box.frameGeometry().width() <= available.width()
        && box.frameGeometry().height() <= available.height();
}

QString lines(int count)
{
    QString text;
    for (int i = 1; i <= count; ++i)
        text += QStringLiteral("%1 message of %2 bytes\r\n").arg(i).arg(i * 100);
    return text;
}

QString withLineFeeds(QString text)
{
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
}

} // namespace

class TestPrompts : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();
    void cleanup();

    void aBoxWithoutATitleCarriesTheApplications();
    void anEmptyTitleIsEmpty();
    void theIconIsTheOneAskedFor_data();
    void theIconIsTheOneAskedFor();
    void everyButtonAnswers_data();
    void everyButtonAnswers();
    void keysAnswer_data();
    void keysAnswer();
    void closingAnswersTheCarefulButton_data();
    void closingAnswersTheCarefulButton();
    void aBoxIsModalToTheActiveWindow();
    void aBoxOverABoxBelongsToIt();
    void aBoxClosesOpenMenus();
    void aBoxHoldsTheEventGate();
    void aBoxSurvivesItsOwner();
    void aBoxDoesNotEndTheProgram();
    void markupIsShownAsItIs();
    void shortTextsAreReadAsTheyAre();
    void longListingsScroll();
    void longListingsAreReadWithTheKeyboard();
    void textsOfAnyShapeStayOnTheScreen_data();
    void textsOfAnyShapeStayOnTheScreen();
    void endlessTextsAreCut();
    void theCopyKeyCopiesTheText();
    void anInputBoxOffersItsDefaultSelected();
    void anInputBoxReturnsWhatIsTyped();
    void anInputBoxLeftOtherwiseReturnsNothing_data();
    void anInputBoxLeftOtherwiseReturnsNothing();
    void anInputBoxHoldsTheEventGate();
    void promptsKeepTheirAmpersands();
    void longPromptsStayOnTheScreen();
    void theErrorBoxNamesNumberAndText();
    void screenReadersFindTheBoxes();

private:
    std::unique_ptr<QWidget> m_window;
};

void TestPrompts::init()
{
    m_window = std::make_unique<QWidget>();
    m_window->setWindowTitle(u"Owner"_qs);
    m_window->show();
    QVERIFY(QTest::qWaitForWindowActive(m_window.get()));
}

void TestPrompts::cleanup()
{
    m_window.reset();
    QVERIFY(!QApplication::activeModalWidget());
    QVERIFY(!EventGate::isHeld());
}

void TestPrompts::aBoxWithoutATitleCarriesTheApplications()
{
    whenBoxOpens([](QDialog &box) {
        QCOMPARE(box.windowTitle(), u"Vandrel"_qs);
        pressKey(box, Qt::Key_Return);
    });
    QCOMPARE(MsgBox(u"You have mail(s) !!"_qs), Answer::Ok);
}

void TestPrompts::anEmptyTitleIsEmpty()
{
    whenBoxOpens([](QDialog &box) {
        QCOMPARE(box.windowTitle(), u" "_qs);
        pressKey(box, Qt::Key_Return);
    });
    MsgBox(u"text"_qs, Buttons::OkOnly, BoxIcon::None, QString());
    whenBoxOpens([](QDialog &box) {
        QCOMPARE(box.windowTitle(), u" "_qs);
        pressKey(box, Qt::Key_Return);
    });
    InputBox(u"prompt"_qs, QString());
}

void TestPrompts::theIconIsTheOneAskedFor_data()
{
    QTest::addColumn<BoxIcon>("icon");
    QTest::addColumn<QString>("name");
    QTest::addRow("none") << BoxIcon::None << QString();
    QTest::addRow("stop") << BoxIcon::Critical << u"Error"_qs;
    QTest::addRow("exclamation") << BoxIcon::Exclamation << u"Warning"_qs;
    QTest::addRow("information") << BoxIcon::Information << u"Information"_qs;
}

void TestPrompts::theIconIsTheOneAskedFor()
{
    QFETCH(const BoxIcon, icon);
    QFETCH(const QString, name);
    QPixmap drawn(16, 16);
    drawn.fill(Qt::red);
    QApplication::setWindowIcon(drawn);
    whenBoxOpens([&](QDialog &box) {
        const auto *const label = box.findChild<QLabel *>(u"icon"_qs);
        QCOMPARE(label != nullptr, icon != BoxIcon::None);
        if (label) {
            QCOMPARE(label->accessibleName(), name);
            QVERIFY(!label->pixmap(Qt::ReturnByValue).isNull());
        }
        QCOMPARE(box.windowIcon().cacheKey(), QApplication::windowIcon().cacheKey());
        pressKey(box, Qt::Key_Return);
    });
    MsgBox(u"text"_qs, Buttons::OkOnly, icon);
}

void TestPrompts::everyButtonAnswers_data()
{
    QTest::addColumn<Buttons>("buttons");
    QTest::addColumn<QDialogButtonBox::StandardButton>("pressed");
    QTest::addColumn<Answer>("answer");
    QTest::addColumn<int>("count");
    QTest::addRow("ok") << Buttons::OkOnly << QDialogButtonBox::Ok << Answer::Ok << 1;
    QTest::addRow("yes of two") << Buttons::YesNo << QDialogButtonBox::Yes << Answer::Yes << 2;
    QTest::addRow("no of two") << Buttons::YesNo << QDialogButtonBox::No << Answer::No << 2;
    QTest::addRow("yes of three") << Buttons::YesNoCancel << QDialogButtonBox::Yes << Answer::Yes << 3;
    QTest::addRow("no of three") << Buttons::YesNoCancel << QDialogButtonBox::No << Answer::No << 3;
    QTest::addRow("cancel") << Buttons::YesNoCancel << QDialogButtonBox::Cancel << Answer::Cancel << 3;
}

void TestPrompts::everyButtonAnswers()
{
    QFETCH(const Buttons, buttons);
    QFETCH(const QDialogButtonBox::StandardButton, pressed);
    QFETCH(const Answer, answer);
    QFETCH(const int, count);
    whenBoxOpens([&](QDialog &box) {
        QCOMPARE(box.findChildren<QPushButton *>().size(), count);
        QTest::mouseClick(buttonOf(box, pressed), Qt::LeftButton);
    });
    QCOMPARE(MsgBox(u"Are you sure?"_qs, buttons), answer);
}

void TestPrompts::keysAnswer_data()
{
    QTest::addColumn<Buttons>("buttons");
    QTest::addColumn<Qt::Key>("key");
    QTest::addColumn<Qt::KeyboardModifiers>("modifiers");
    QTest::addColumn<Answer>("answer");
    const Qt::KeyboardModifiers none = Qt::NoModifier;
    const Qt::KeyboardModifiers alt = Qt::AltModifier;
    QTest::addRow("enter, ok") << Buttons::OkOnly << Qt::Key_Return << none << Answer::Ok;
    QTest::addRow("escape, ok") << Buttons::OkOnly << Qt::Key_Escape << none << Answer::Ok;
    QTest::addRow("space, ok") << Buttons::OkOnly << Qt::Key_Space << none << Answer::Ok;
    QTest::addRow("enter, two") << Buttons::YesNo << Qt::Key_Return << none << Answer::Yes;
    QTest::addRow("escape, two") << Buttons::YesNo << Qt::Key_Escape << none << Answer::No;
    QTest::addRow("y") << Buttons::YesNo << Qt::Key_Y << none << Answer::Yes;
    QTest::addRow("n") << Buttons::YesNo << Qt::Key_N << none << Answer::No;
    QTest::addRow("alt+n") << Buttons::YesNo << Qt::Key_N << alt << Answer::No;
    QTest::addRow("enter, three") << Buttons::YesNoCancel << Qt::Key_Enter << none << Answer::Yes;
    QTest::addRow("escape, three") << Buttons::YesNoCancel << Qt::Key_Escape << none << Answer::Cancel;
}

void TestPrompts::keysAnswer()
{
    QFETCH(const Buttons, buttons);
    QFETCH(const Qt::Key, key);
    QFETCH(const Qt::KeyboardModifiers, modifiers);
    QFETCH(const Answer, answer);
    whenBoxOpens([&](QDialog &box) { pressKey(box, key, modifiers); });
    QCOMPARE(MsgBox(u"Are you sure?"_qs, buttons), answer);
}

void TestPrompts::closingAnswersTheCarefulButton_data()
{
    QTest::addColumn<Buttons>("buttons");
    QTest::addColumn<Answer>("answer");
    QTest::addRow("ok") << Buttons::OkOnly << Answer::Ok;
    QTest::addRow("two") << Buttons::YesNo << Answer::No;
    QTest::addRow("three") << Buttons::YesNoCancel << Answer::Cancel;
}

void TestPrompts::closingAnswersTheCarefulButton()
{
    QFETCH(const Buttons, buttons);
    QFETCH(const Answer, answer);
    whenBoxOpens([](QDialog &box) { box.close(); });
    QCOMPARE(MsgBox(u"Are you sure?"_qs, buttons), answer);
}

void TestPrompts::aBoxIsModalToTheActiveWindow()
{
    whenBoxOpens([this](QDialog &box) {
        QCOMPARE(box.windowModality(), Qt::ApplicationModal);
        QCOMPARE(box.parentWidget(), m_window.get());
        box.close();
    });
    MsgBox(u"text"_qs);
}

void TestPrompts::aBoxOverABoxBelongsToIt()
{
    whenBoxOpens([](QDialog &outer) {
        whenBoxOpens([&outer](QDialog &inner) {
            QCOMPARE(inner.parentWidget(), &outer);
            QVERIFY(EventGate::isHeld());
            inner.close();
        });
        QCOMPARE(MsgBox(u"inner"_qs), Answer::Ok);
        QVERIFY(outer.isVisible());
        QVERIFY(EventGate::isHeld());
        outer.close();
    });
    QCOMPARE(MsgBox(u"outer"_qs, Buttons::YesNo), Answer::No);
}

void TestPrompts::aBoxClosesOpenMenus()
{
    QMenu menu;
    menu.addAction(u"item"_qs);
    menu.popup(QPoint(10, 10));
    QVERIFY(menu.isVisible());
    whenBoxOpens([&menu](QDialog &box) {
        QVERIFY(!menu.isVisible());
        box.close();
    });
    MsgBox(u"text"_qs);
}

void TestPrompts::aBoxHoldsTheEventGate()
{
    bool delivered = false;
    whenBoxOpens([&](QDialog &box) {
        QVERIFY(EventGate::isHeld());
        EventGate::raise(this, [&delivered] { delivered = true; });
        QCoreApplication::processEvents();
        QVERIFY(!delivered);
        box.close();
    });
    MsgBox(u"text"_qs);
    QVERIFY(!delivered);
    QTRY_VERIFY(delivered);
}

void TestPrompts::aBoxSurvivesItsOwner()
{
    whenBoxOpens([this](QDialog &) { m_window.reset(); });
    QCOMPARE(MsgBox(u"text"_qs, Buttons::YesNo), Answer::No);
    init();
    whenBoxOpens([this](QDialog &) { m_window.reset(); });
    QCOMPARE(InputBox(u"prompt"_qs, u"title"_qs, u"default"_qs), QString());
}

// A box may be all that shows; its end must not pass for the end of the last window.
void TestPrompts::aBoxDoesNotEndTheProgram()
{
    m_window->hide();
    bool ended = false;
    const QMetaObject::Connection ending
        = connect(qApp, &QGuiApplication::lastWindowClosed, this, [&ended] { ended = true; });
    whenBoxOpens([](QDialog &box) { box.close(); });
    MsgBox(u"text"_qs);
    QCoreApplication::processEvents();
    disconnect(ending);
    QVERIFY(!ended);
}

void TestPrompts::markupIsShownAsItIs()
{
    const QString markup = u"<b>bold</b> &amp; <img src='/etc/passwd'>"_qs;
    whenBoxOpens([&markup](QDialog &box) {
        const auto *const label = box.findChild<QLabel *>(u"text"_qs);
        QVERIFY(label);
        QCOMPARE(label->textFormat(), Qt::PlainText);
        QCOMPARE(label->text(), markup);
        box.close();
    });
    MsgBox(markup);
    whenBoxOpens([&markup](QDialog &box) {
        QCOMPARE(box.findChild<QLabel *>(u"text"_qs)->textFormat(), Qt::PlainText);
        box.close();
    });
    InputBox(markup, u"title"_qs);
}

void TestPrompts::shortTextsAreReadAsTheyAre()
{
    const QString text = u"One line\r\nand another & more"_qs;
    whenBoxOpens([&text](QDialog &box) {
        const auto *const label = box.findChild<QLabel *>(u"text"_qs);
        QVERIFY(label);
        QCOMPARE(label->text(), withLineFeeds(text));
        QVERIFY(label->textInteractionFlags().testFlag(Qt::TextSelectableByMouse));
        QVERIFY(label->textInteractionFlags().testFlag(Qt::TextSelectableByKeyboard));
        QVERIFY(label->height() >= label->heightForWidth(label->width()));
        QVERIFY(isOnScreen(box));
        box.close();
    });
    MsgBox(text);
}

void TestPrompts::longListingsScroll()
{
    const QString listing = lines(5000);
    whenBoxOpens([&listing](QDialog &box) {
        const auto *const view = box.findChild<QPlainTextEdit *>(u"text"_qs);
        QVERIFY(view);
        QCOMPARE(view->toPlainText(), withLineFeeds(listing));
        QVERIFY(view->isReadOnly());
        QVERIFY(view->verticalScrollBar()->maximum() > 0);
        QVERIFY(isOnScreen(box));
        QVERIFY(buttonOf(box, QDialogButtonBox::Ok)->isDefault());
        box.close();
    });
    MsgBox(listing, Buttons::OkOnly, BoxIcon::Information, u"Mail listing on POP server"_qs);
}

void TestPrompts::longListingsAreReadWithTheKeyboard()
{
    whenBoxOpens([](QDialog &box) {
        auto *const view = box.findChild<QPlainTextEdit *>(u"text"_qs);
        QVERIFY(view);
        QVERIFY(buttonOf(box, QDialogButtonBox::Ok)->hasFocus());
        pressKey(box, Qt::Key_PageDown);
        QVERIFY(view->verticalScrollBar()->value() > 0);
        pressKey(box, Qt::Key_Tab);
        QVERIFY(view->hasFocus());
        pressKey(box, Qt::Key_End, Qt::ControlModifier);
        // The bar counts whole lines, so that the last line may show in full one step before its end.
        QVERIFY(view->verticalScrollBar()->maximum() - view->verticalScrollBar()->value() <= 1);
        pressKey(box, Qt::Key_Return);
    });
    QCOMPARE(MsgBox(lines(500)), Answer::Ok);
    whenBoxOpens([](QDialog &box) {
        auto *const view = box.findChild<QPlainTextEdit *>(u"text"_qs);
        view->setFocus();
        pressKey(box, Qt::Key_Escape);
    });
    QCOMPARE(MsgBox(lines(500), Buttons::YesNo), Answer::No);
}

void TestPrompts::textsOfAnyShapeStayOnTheScreen_data()
{
    QTest::addColumn<QString>("text");
    QTest::addRow("empty") << QString();
    QTest::addRow("one letter") << u"x"_qs;
    QTest::addRow("a long path") << u"c:\\"_qs + QString(400, u'x');
    QTest::addRow("an endless word") << QString(200'000, u'W');
    QTest::addRow("a long paragraph") << u"word "_qs.repeated(700);
    QTest::addRow("many line ends") << QString(3000, u'\n');
    QTest::addRow("carriage returns") << QString(3000, u'\r');
    QTest::addRow("many wide lines") << (QString(300, u'W') + u'\n').repeated(1000);
    QTest::addRow("right to left") << u"\u05E9\u05DC\u05D5\u05DD "_qs.repeated(300);
    QTest::addRow("zero bytes") << QString(300, u'\0');
}

void TestPrompts::textsOfAnyShapeStayOnTheScreen()
{
    QFETCH(const QString, text);
    whenBoxOpens([](QDialog &box) {
        QVERIFY2(isOnScreen(box), qPrintable(QStringLiteral("%1 x %2").arg(box.width()).arg(box.height())));
        QVERIFY(box.rect().contains(buttonOf(box, QDialogButtonBox::Yes)->mapTo(&box, QPoint())));
        box.close();
    });
    MsgBox(text, Buttons::YesNoCancel, BoxIcon::Critical);
}

void TestPrompts::endlessTextsAreCut()
{
    whenBoxOpens([](QDialog &box) {
        const QString shown = shownText(box);
        QVERIFY(shown.size() < 1'010'000);
        QVERIFY(shown.endsWith(u"\n... and 9000000 more characters."));
        QVERIFY(isOnScreen(box));
        box.close();
    });
    MsgBox(QString(10'000'000, u'x'));
}

void TestPrompts::theCopyKeyCopiesTheText()
{
    whenBoxOpens([](QDialog &box) {
        QApplication::clipboard()->clear();
        pressKey(box, Qt::Key_C, Qt::ControlModifier);
        QCOMPARE(QApplication::clipboard()->text(), u"What to copy"_qs);
        box.close();
    });
    MsgBox(u"What to copy"_qs);
}

void TestPrompts::anInputBoxOffersItsDefaultSelected()
{
    whenBoxOpens([this](QDialog &box) {
        const auto *const edit = box.findChild<QLineEdit *>();
        QVERIFY(edit->hasFocus());
        QCOMPARE(edit->selectedText(), u"last word"_qs);
        QCOMPARE(box.windowTitle(), u"Find"_qs);
        QCOMPARE(box.windowModality(), Qt::ApplicationModal);
        QCOMPARE(box.parentWidget(), m_window.get());
        QCOMPARE(shownText(box), u"Enter the text to search for:"_qs);
        pressKey(box, Qt::Key_Return);
    });
    QCOMPARE(InputBox(u"Enter the text to search for:"_qs, u"Find"_qs, u"last word"_qs), u"last word"_qs);
}

void TestPrompts::anInputBoxReturnsWhatIsTyped()
{
    whenBoxOpens([](QDialog &box) {
        QTest::keyClicks(box.findChild<QLineEdit *>(), u" new "_qs);
        QTest::mouseClick(buttonOf(box, QDialogButtonBox::Ok), Qt::LeftButton);
    });
    QCOMPARE(InputBox(u"prompt"_qs, u"title"_qs, u"default"_qs), u" new "_qs);
}

void TestPrompts::anInputBoxLeftOtherwiseReturnsNothing_data()
{
    QTest::addColumn<std::function<void(QDialog &)>>("leave");
    QTest::addRow("escape") << std::function<void(QDialog &)>(
        [](QDialog &box) { pressKey(box, Qt::Key_Escape); });
    QTest::addRow("cancel") << std::function<void(QDialog &)>(
        [](QDialog &box) { QTest::mouseClick(buttonOf(box, QDialogButtonBox::Cancel), Qt::LeftButton); });
    QTest::addRow("close box") << std::function<void(QDialog &)>([](QDialog &box) { box.close(); });
}

void TestPrompts::anInputBoxLeftOtherwiseReturnsNothing()
{
    QFETCH(const std::function<void(QDialog &)>, leave);
    whenBoxOpens(leave);
    QCOMPARE(InputBox(u"prompt"_qs, u"title"_qs, u"default"_qs), QString());
}

void TestPrompts::anInputBoxHoldsTheEventGate()
{
    whenBoxOpens([](QDialog &box) {
        QVERIFY(EventGate::isHeld());
        box.close();
    });
    InputBox(u"prompt"_qs, u"title"_qs);
}

void TestPrompts::promptsKeepTheirAmpersands()
{
    whenBoxOpens([](QDialog &box) {
        const auto *const label = box.findChild<QLabel *>(u"text"_qs);
        QCOMPARE(label->buddy(), box.findChild<QLineEdit *>());
        // Doubled, it is shown as one and is no mnemonic.
        QCOMPARE(label->text(), u"New name of rock && roll.mp3"_qs);
        box.close();
    });
    InputBox(u"New name of rock & roll.mp3"_qs, u"Rename"_qs);
}

void TestPrompts::longPromptsStayOnTheScreen()
{
    whenBoxOpens([](QDialog &box) {
        QVERIFY(isOnScreen(box));
        QVERIFY(box.findChild<QLineEdit *>()->hasFocus());
        pressKey(box, Qt::Key_Return);
    });
    QCOMPARE(InputBox(QString(50'000, u'x'), u"title"_qs, u"kept"_qs), u"kept"_qs);
}

void TestPrompts::theErrorBoxNamesNumberAndText()
{
    whenBoxOpens([](QDialog &box) {
        QCOMPARE(box.windowTitle(), u"Vandrel"_qs);
        QCOMPARE(shownText(box), u"Run-time error '6':\n\nOverflow"_qs);
        QCOMPARE(box.findChild<QLabel *>(u"icon"_qs)->accessibleName(), u"Error"_qs);
        QCOMPARE(box.findChildren<QPushButton *>().size(), 1);
        QVERIFY(EventGate::isHeld());
        box.close();
    });
    prompts().errorBox(RuntimeError(error::Overflow));
    // A text with place marks of its own stays as it is.
    whenBoxOpens([](QDialog &box) {
        QCOMPARE(shownText(box), u"Run-time error '53':\n\n%1 and %2 were not found."_qs);
        box.close();
    });
    prompts().errorBox(RuntimeError(error::FileNotFound, u"%1 and %2 were not found."_qs));
}

void TestPrompts::screenReadersFindTheBoxes()
{
    whenBoxOpens([](QDialog &box) {
        const QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(&box);
        QCOMPARE(accessible->role(), QAccessible::AlertMessage);
        QCOMPARE(accessible->text(QAccessible::Name), u"ERROR"_qs);
        auto *const label = box.findChild<QLabel *>(u"text"_qs);
        QCOMPARE(QAccessible::queryAccessibleInterface(label)->text(QAccessible::Name), u"No connection"_qs);
        box.close();
    });
    MsgBox(u"No connection"_qs, Buttons::OkOnly, BoxIcon::Critical, u"ERROR"_qs);

    whenBoxOpens([](QDialog &box) {
        auto *const view = box.findChild<QPlainTextEdit *>(u"text"_qs);
        QAccessibleInterface *const accessible = QAccessible::queryAccessibleInterface(view);
        QCOMPARE(accessible->text(QAccessible::Name), u"Message"_qs);
        QVERIFY(accessible->textInterface()->characterCount() > 1000);
        box.close();
    });
    MsgBox(lines(500));

    whenBoxOpens([](QDialog &box) {
        QAccessibleInterface *const edit
            = QAccessible::queryAccessibleInterface(box.findChild<QLineEdit *>());
        QCOMPARE(edit->text(QAccessible::Name), u"Enter the text:"_qs);
        box.close();
    });
    InputBox(u"Enter the text:"_qs, u"Find"_qs);
}

QTEST_MAIN(TestPrompts)
#include "TestPrompts.moc"
