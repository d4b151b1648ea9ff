#include <limits>
#include <memory>

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include "controls/RichTextBox.h"
#include "controls/TextBox.h"
#include "internet/frmPOP.h"
#include "tests/support/FakeDocumentFiles.h"
#include "tests/support/FakePOPMail.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The POP3 mail reader on a scripted mailbox.
class TestPopReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void captions_data();
    void captions();
    void labelsAreBuddiesOfTheirBoxes_data();
    void labelsAreBuddiesOfTheirBoxes();
    void accessibleNames();
    void thePasswordIsShownAsTyped();
    void theTabOrderFollowsTheEye();
    void whatIsOnlyShownCannotBeTypedOver();
    void enterInTheFieldsDoesNothing();
    void enterAndSpacePressTheButtonWithTheFocus();
    void escapeLeavesTheWindowOpen();
    void theWindowFitsItsScreenAndCannotBeResized();

    void loadDisablesTheMailButtons();
    void connectPassesTheTextsAsTheyAre();
    void connectPassesEmptyFieldsOn();
    void pastedLinesStayOnOneLine();
    void connectDisablesOnlyItself();
    void connectTakesTheFocusAwayFromDisconnect();
    void disconnect();
    void disconnectIsAlwaysEnabled();

    void firstFetchesMessageOne();
    void lastFetchesTheLastMessage();
    void lastReadsTheCountTwice();
    void nextGoesOnByOne();
    void pastTheLastMailTheLastOneIsFetchedAgain();
    void nextInAnEmptyMailboxAsksForNumberNought();
    void nextPast32767IsAnOverflow();
    void previousGoesBackByOne();
    void previousRightAfterLoginFetchesMessageOne();
    void previousBefore32768IsAnOverflow();
    void afterDisconnectNextAsksForMessageOne();
    void navigationEmptiesTheContentsFirst_data();
    void navigationEmptiesTheContentsFirst();
    void whenMailIndexIsWritten_data();
    void whenMailIndexIsWritten();

    void getMailConvertsTheTypedNumber_data();
    void getMailConvertsTheTypedNumber();
    void getMailRefusesWhatIsNotThere_data();
    void getMailRefusesWhatIsNotThere();
    void getMailEmptiesTheContentsEvenWhenItRefuses();
    void getMailLeavesCurrentMailAlone();
    void aNumberBeyondAllNumbersIsAnOverflow();
    void deleteAsksNothing();
    void listAsksForTheListing();
    void whatAnAssignmentRaisesEndsTheProgram();

    void hasMailSaysSo();
    void hasMailFalseDisablesTheMailButtons();
    void noMailSaysSoAndDisablesTheMailButtons();
    void downloadedSaysSo();
    void aFailedDownloadSaysNothing();
    void disconnectedReturnsToIdle();
    void disconnectedFalseChangesNothing();
    void loggedInEnablesTheMailButtons();
    void aFailedLoginChangesNothing();
    void mailboxStat();
    void mailTextReplacesTheContents();
    void aLongMailStartsAtItsBeginning();
    void statusTextIsReplaced();
    void anErrorIsShown();
    void anErrorThatIsNoneIsNotShown();
    void theListingIsShown();
    void mailDeletedNamesTheNumber();
    void busyDisablesTheMailButtonsAlone();

    void aWholeSession();
    void anEmptyMailbox();
    void anOpenBoxHoldsTheEventsBehindIt();
    void aFloodOfEventsLeavesRoomToPaint();
    void theFocusReturnsToTheButtonThatWasPressed();
    void theFocusStaysWhereTheUserHasGone();
    void closingTheWindowTakesTheControlWithIt();
};

namespace {

const QStringList mailButtonNames{u"First"_s,          u"PrevMail"_s,          u"NextMail"_s,       u"Last"_s,
                                  u"GetMailCommand"_s, u"DeleteMailCommand"_s, u"ListMailCommand"_s};

// The reader on its fake, and the hands of its user.
class Reader
{
public:
    Reader()
    {
        auto control = std::make_unique<FakePOPMail>();
        mail = control.get();
        form = std::make_unique<frmPOP>(std::move(control), std::make_shared<FakeDocumentFiles>());
    }

    bool show() const { return showActive(*form); }

    // As after a login to a mailbox of that many messages.
    void logIn(std::int16_t count)
    {
        mail->count = count;
        Q_EMIT mail->LoggedIn(true);
        mail->takeCalls();
    }

    QPushButton *button(const QString &name) const { return form->findChild<QPushButton *>(name); }

    // The names of the mail buttons that are enabled.
    QStringList enabledMailButtons() const
    {
        QStringList enabled;
        for (const QString &name : mailButtonNames) {
            if (button(name)->isEnabled())
                enabled.append(name);
        }
        return enabled;
    }

    // Presses `name` and returns what the control was told.
    QStringList press(const QString &name) const
    {
        button(name)->click();
        return mail->takeCalls();
    }

    QStringList getMail(const QString &typed) const
    {
        form->MailIndex->setText(typed);
        return press(u"GetMailCommand"_s);
    }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    FakePOPMail *mail = nullptr;
    std::unique_ptr<frmPOP> form;
};

QStringList fetch(int number)
{
    return {u"MailNumber = %1"_s.arg(number), u"RetrieveNow = True"_s};
}

} // namespace

void TestPopReader::theWindow()
{
    const Reader reader;
    QCOMPARE(reader.form->objectName(), u"frmPOP"_s);
    QCOMPARE(reader.form->windowTitle(), u"Read POP mail"_s);
    QVERIFY(reader.form->isWindow());
    QVERIFY(!(reader.form->windowFlags() & Qt::WindowMaximizeButtonHint));
    QCOMPARE(QFontInfo(reader.form->Login->font()).family(), QFontInfo(QFont(u"MS Sans Serif"_s)).family());
    QCOMPARE(reader.form->Login->font().family(), u"MS Sans Serif"_s);
    QCOMPARE(reader.form->MailContents->QWidget::font().family(), u"Arial"_s);
    QCOMPARE(reader.form->POPConnectionStatus->font().family(), u"Arial"_s);
}

void TestPopReader::captions_data()
{
    QTest::addColumn<QString>("caption");
    QTest::newRow("Label1") << u"POP Server Name"_s;
    QTest::newRow("Label2") << u"Username"_s;
    QTest::newRow("Label3") << u"Password"_s;
    QTest::newRow("Label4") << u"You have"_s;
    QTest::newRow("Label5") << u"Octets"_s;
    QTest::newRow("Label7") << u"mail(s)"_s;
    QTest::newRow("Label8") << u"Mail No :"_s;
    QTest::newRow("Label9") << u"Connection status"_s;
    QTest::newRow("Login") << u"Connect "_s;
    QTest::newRow("Disconnect") << u"Disconnect"_s;
    QTest::newRow("First") << u"<<"_s;
    QTest::newRow("PrevMail") << u"<"_s;
    QTest::newRow("NextMail") << u">"_s;
    QTest::newRow("Last") << u">>"_s;
    QTest::newRow("GetMailCommand") << u"Get  Mail"_s;
    QTest::newRow("DeleteMailCommand") << u"Delete Mail "_s;
    QTest::newRow("ListMailCommand") << u"Mail list "_s;
}

void TestPopReader::captions()
{
    const Reader reader;
    QTEST(captionOf(*reader.form, QString::fromLatin1(QTest::currentDataTag())), "caption");
}

void TestPopReader::labelsAreBuddiesOfTheirBoxes_data()
{
    QTest::addColumn<QString>("box");
    QTest::newRow("Label1") << u"ServerName"_s;
    QTest::newRow("Label2") << u"Username"_s;
    QTest::newRow("Label3") << u"Password"_s;
    QTest::newRow("Label4") << u"TotalAvailableMail"_s;
    QTest::newRow("Label5") << u"TotalMailSizeOnPOPServer"_s;
    QTest::newRow("Label8") << u"MailIndex"_s;
    QTest::newRow("Label9") << u"POPConnectionStatus"_s;
}

void TestPopReader::labelsAreBuddiesOfTheirBoxes()
{
    const Reader reader;
    QTEST(buddyOf(*reader.form, QString::fromLatin1(QTest::currentDataTag())), "box");
}

void TestPopReader::accessibleNames()
{
    const Reader reader;
    QCOMPARE(reader.form->MailContents->objectName(), u"MailContents"_s);
    QCOMPARE(reader.form->MailContents->accessibleName(), u"Message text"_s);
    // Captioned buttons are known by their captions.
    for (const QString &name : mailButtonNames)
        QVERIFY(reader.button(name)->accessibleName().isEmpty());
}

void TestPopReader::thePasswordIsShownAsTyped()
{
    const Reader reader;
    QCOMPARE(reader.form->Password->echoMode(), QLineEdit::Normal);
}

void TestPopReader::theTabOrderFollowsTheEye()
{
    Reader reader;
    reader.logIn(3);
    QVERIFY(reader.show());
    const QStringList expected = QStringList{u"ServerName"_s,
                                             u"Username"_s,
                                             u"Password"_s,
                                             u"Login"_s,
                                             u"Disconnect"_s,
                                             u"TotalAvailableMail"_s,
                                             u"TotalMailSizeOnPOPServer"_s,
                                             u"MailIndex"_s}
        + mailButtonNames + QStringList{u"MailContents"_s, u"POPConnectionStatus"_s};
    QCOMPARE(tabbedThrough(17), expected + QStringList{u"ServerName"_s});
}

void TestPopReader::whatIsOnlyShownCannotBeTypedOver()
{
    const Reader reader;
    QVERIFY(reader.form->TotalAvailableMail->isReadOnly());
    QVERIFY(reader.form->TotalMailSizeOnPOPServer->isReadOnly());
    QVERIFY(reader.form->MailContents->isReadOnly());
    QVERIFY(reader.form->MailContents->textInteractionFlags() & Qt::TextSelectableByKeyboard);
    QVERIFY(reader.form->POPConnectionStatus->isReadOnly());
    QVERIFY(!reader.form->MailIndex->isReadOnly());
}

void TestPopReader::enterInTheFieldsDoesNothing()
{
    Reader reader;
    reader.logIn(3);
    QVERIFY(reader.show());
    for (QLineEdit *box :
         {reader.form->ServerName, reader.form->Username, reader.form->Password, reader.form->MailIndex}) {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Return);
        QTest::keyClick(box, Qt::Key_Enter);
    }
    QCOMPARE(reader.mail->takeCalls(), QStringList());
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::enterAndSpacePressTheButtonWithTheFocus()
{
    Reader reader;
    reader.logIn(3);
    QVERIFY(reader.show());
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Space}) {
        reader.form->First->setFocus();
        QTest::keyClick(reader.form->First, key);
        QCOMPARE(reader.mail->takeCalls(), fetch(1));
    }
}

void TestPopReader::escapeLeavesTheWindowOpen()
{
    const Reader reader;
    QVERIFY(reader.show());
    QTest::keyClick(reader.form->ServerName, Qt::Key_Escape);
    QVERIFY(reader.form->isVisible());
}

void TestPopReader::theWindowFitsItsScreenAndCannotBeResized()
{
    const Reader reader;
    QCOMPARE(reader.form->minimumSize(), reader.form->maximumSize());
    const QRect available = reader.form->screen()->availableGeometry();
    QVERIFY(available.contains(reader.form->geometry()));
    const QPoint offCentre = reader.form->geometry().center() - available.center();
    QVERIFY(offCentre.manhattanLength() <= 2);
    // Nothing is squeezed below what it needs.
    reader.form->show();
    for (const QWidget *widget : reader.form->findChildren<QWidget *>(Qt::FindDirectChildrenOnly)) {
        if (!qobject_cast<const QLabel *>(widget) && !qobject_cast<const QPushButton *>(widget))
            continue;
        QVERIFY2(widget->height() >= widget->minimumSizeHint().height(), qPrintable(widget->objectName()));
        QVERIFY2(reader.form->rect().contains(widget->geometry()), qPrintable(widget->objectName()));
    }
}

void TestPopReader::loadDisablesTheMailButtons()
{
    const Reader reader;
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(reader.form->Login->isEnabled());
    QVERIFY(reader.form->Disconnect->isEnabled());
    QCOMPARE(reader.form->CurrentMail.value(), 1);
    QVERIFY(!reader.form->MailPresent);
    QCOMPARE(reader.mail->takeCalls(), QStringList());
    QCOMPARE(reader.form->MailIndex->text(), QString());
}

void TestPopReader::connectPassesTheTextsAsTheyAre()
{
    const Reader reader;
    reader.form->ServerName->setText(u"  mail.example.org  "_s);
    reader.form->Username->setText(u" anna "_s);
    reader.form->Password->setText(u" s3cret "_s);
    QCOMPARE(reader.press(u"Login"_s),
             QStringList({u"POPServer =   mail.example.org  "_s, u"POPUser =  anna "_s,
                          u"POPPassword =  s3cret "_s, u"ConnectNow = True"_s}));
}

void TestPopReader::connectPassesEmptyFieldsOn()
{
    const Reader reader;
    QCOMPARE(reader.press(u"Login"_s),
             QStringList({u"POPServer = "_s, u"POPUser = "_s, u"POPPassword = "_s, u"ConnectNow = True"_s}));
}

// A password copied with the end of its line is meant without it.
void TestPopReader::pastedLinesStayOnOneLine()
{
    const Reader reader;
    QApplication::clipboard()->setText(u" s3cret\r\n"_s);
    reader.form->Password->paste();
    QApplication::clipboard()->setText(u"mail.example.org\n110"_s);
    reader.form->ServerName->paste();
    reader.form->Username->setText(u"anna\nDELE 1"_s);
    QCOMPARE(reader.press(u"Login"_s),
             QStringList({u"POPServer = mail.example.org 110"_s, u"POPUser = anna DELE 1"_s,
                          u"POPPassword = s3cret"_s, u"ConnectNow = True"_s}));
}

void TestPopReader::connectDisablesOnlyItself()
{
    Reader reader;
    bool enabledWhenTold = false;
    reader.mail->onCall = [&](const QString &) { enabledWhenTold = reader.form->Login->isEnabled(); };
    reader.press(u"Login"_s);
    QVERIFY(enabledWhenTold);
    QVERIFY(!reader.form->Login->isEnabled());
    QVERIFY(reader.form->Disconnect->isEnabled());
    QCOMPARE(reader.enabledMailButtons(), QStringList());

    // While the old session is still ending, connecting anew leaves the mail buttons as they are.
    Q_EMIT reader.mail->LoggedIn(true);
    reader.press(u"Disconnect"_s);
    reader.press(u"Login"_s);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
}

void TestPopReader::connectTakesTheFocusAwayFromDisconnect()
{
    Reader reader;
    QVERIFY(reader.show());
    reader.form->Login->setFocus();
    QTest::keyClick(reader.form->Login, Qt::Key_Return);
    QVERIFY(!reader.form->Login->isEnabled());
    QVERIFY(!reader.form->Disconnect->hasFocus());
    reader.mail->takeCalls();
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Return);
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Space);
    QCOMPARE(reader.mail->takeCalls(), QStringList());
}

void TestPopReader::disconnect()
{
    Reader reader;
    reader.logIn(2);
    reader.press(u"Login"_s);
    bool enabledWhenTold = false;
    reader.mail->onCall = [&](const QString &) { enabledWhenTold = reader.form->Login->isEnabled(); };
    QCOMPARE(reader.press(u"Disconnect"_s), QStringList{u"DisconnectNow = True"_s});
    QVERIFY(enabledWhenTold);
    QVERIFY(reader.form->Login->isEnabled());
    QCOMPARE(reader.form->CurrentMail.value(), 0);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
}

void TestPopReader::disconnectIsAlwaysEnabled()
{
    Reader reader;
    const auto enabled = [&reader] { return reader.form->Disconnect->isEnabled(); };
    QVERIFY(enabled());
    reader.press(u"Login"_s);
    QVERIFY(enabled());
    Q_EMIT reader.mail->Busy(true);
    QVERIFY(enabled());
    Q_EMIT reader.mail->Busy(false);
    Q_EMIT reader.mail->Disconnected(true);
    QVERIFY(enabled());
}

void TestPopReader::firstFetchesMessageOne()
{
    Reader reader;
    reader.logIn(5);
    reader.form->CurrentMail = 4;
    QCOMPARE(reader.press(u"First"_s), fetch(1));
    QCOMPARE(reader.form->MailIndex->text(), u"1"_s);
    QCOMPARE(reader.form->CurrentMail.value(), 1);
}

void TestPopReader::lastFetchesTheLastMessage()
{
    Reader reader;
    reader.logIn(5);
    QCOMPARE(reader.press(u"Last"_s), fetch(5));
    QCOMPARE(reader.form->MailIndex->text(), u"5"_s);
    QCOMPARE(reader.form->CurrentMail.value(), 5);
}

void TestPopReader::lastReadsTheCountTwice()
{
    Reader reader;
    reader.logIn(5);
    reader.mail->onCount = [&reader] { ++reader.mail->count; };
    QCOMPARE(reader.press(u"Last"_s), fetch(6));
    QCOMPARE(reader.form->MailIndex->text(), u"7"_s);
    QCOMPARE(reader.form->CurrentMail.value(), 7);
}

void TestPopReader::nextGoesOnByOne()
{
    Reader reader;
    reader.logIn(3);
    QCOMPARE(reader.press(u"NextMail"_s), fetch(2));
    QCOMPARE(reader.form->MailIndex->text(), u"2"_s);
    QCOMPARE(reader.press(u"NextMail"_s), fetch(3));
    QCOMPARE(reader.form->MailIndex->text(), u"3"_s);
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::pastTheLastMailTheLastOneIsFetchedAgain()
{
    Reader reader;
    reader.logIn(1);
    QStringList toldBefore{u"unset"_s};
    reader.prompts.expect(u"This is last mail in your mailbox..."_s, u"Last mail"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None)
        .meanwhile([&] { toldBefore = reader.mail->takeCalls(); });
    QCOMPARE(reader.press(u"NextMail"_s), fetch(1));
    QCOMPARE(toldBefore, QStringList());
    QCOMPARE(reader.form->MailIndex->text(), u"1"_s);
    QCOMPARE(reader.form->CurrentMail.value(), 1);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::nextInAnEmptyMailboxAsksForNumberNought()
{
    Reader reader;
    reader.logIn(0);
    reader.prompts.expect(u"This is last mail in your mailbox..."_s, u"Last mail"_s);
    QCOMPARE(reader.press(u"NextMail"_s), fetch(0));
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::nextPast32767IsAnOverflow()
{
    Reader reader;
    reader.logIn(std::numeric_limits<std::int16_t>::max());
    reader.press(u"Last"_s);
    reader.prompts.expectError(error::Overflow);
    QCOMPARE(reader.press(u"NextMail"_s), QStringList());
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.end.count(), 1);
}

void TestPopReader::previousGoesBackByOne()
{
    Reader reader;
    reader.logIn(3);
    reader.press(u"Last"_s);
    QCOMPARE(reader.press(u"PrevMail"_s), fetch(2));
    QCOMPARE(reader.form->MailIndex->text(), u"2"_s);
    QCOMPARE(reader.press(u"PrevMail"_s), fetch(1));
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::previousRightAfterLoginFetchesMessageOne()
{
    Reader reader;
    reader.logIn(3);
    QStringList toldBefore{u"unset"_s};
    reader.prompts.expect(u"This is first mail in your mailbox..."_s, u"First mail"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None)
        .meanwhile([&] { toldBefore = reader.mail->takeCalls(); });
    QCOMPARE(reader.press(u"PrevMail"_s), fetch(1));
    QCOMPARE(toldBefore, QStringList());
    QCOMPARE(reader.form->MailIndex->text(), u"1"_s);
    QCOMPARE(reader.form->CurrentMail.value(), 1);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::previousBefore32768IsAnOverflow()
{
    Reader reader;
    reader.logIn(1);
    reader.form->CurrentMail = std::numeric_limits<std::int16_t>::min();
    reader.prompts.expectError(error::Overflow);
    QCOMPARE(reader.press(u"PrevMail"_s), QStringList());
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.end.count(), 1);
}

void TestPopReader::afterDisconnectNextAsksForMessageOne()
{
    Reader reader;
    reader.logIn(3);
    reader.press(u"Last"_s);
    reader.press(u"Disconnect"_s);
    QCOMPARE(reader.press(u"NextMail"_s), fetch(1));
}

void TestPopReader::navigationEmptiesTheContentsFirst_data()
{
    QTest::addColumn<QString>("button");
    for (const QString &name : {u"First"_s, u"PrevMail"_s, u"NextMail"_s, u"Last"_s, u"GetMailCommand"_s})
        QTest::newRow(qPrintable(name)) << name;
}

void TestPopReader::navigationEmptiesTheContentsFirst()
{
    QFETCH(QString, button);
    Reader reader;
    reader.logIn(9);
    reader.form->CurrentMail = 5;
    reader.form->MailIndex->setText(u"4"_s);
    Q_EMIT reader.mail->MailText(u"the old message"_s);
    QStringList contents;
    reader.mail->onCall = [&](const QString &) { contents.append(reader.form->MailContents->text()); };
    reader.press(button);
    QCOMPARE(contents, QStringList({QString(), QString()}));
}

void TestPopReader::whenMailIndexIsWritten_data()
{
    QTest::addColumn<QStringList>("shown");
    // What MailIndex shows when MailNumber is assigned, and when the retrieval is started.
    QTest::newRow("First") << QStringList({u"old"_s, u"old"_s});
    QTest::newRow("Last") << QStringList({u"old"_s, u"9"_s});
    QTest::newRow("NextMail") << QStringList({u"old"_s, u"6"_s});
    QTest::newRow("PrevMail") << QStringList({u"old"_s, u"4"_s});
}

void TestPopReader::whenMailIndexIsWritten()
{
    QFETCH(QStringList, shown);
    Reader reader;
    reader.logIn(9);
    reader.form->CurrentMail = 5;
    reader.form->MailIndex->setText(u"old"_s);
    QStringList seen;
    reader.mail->onCall = [&](const QString &) { seen.append(reader.form->MailIndex->text()); };
    reader.press(QString::fromLatin1(QTest::currentDataTag()));
    QCOMPARE(seen, shown);
}

void TestPopReader::getMailConvertsTheTypedNumber_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<int>("number");
    QTest::newRow("a number") << u"2"_s << 2;
    QTest::newRow("the last") << u"9"_s << 9;
    QTest::newRow("up") << u"2.6"_s << 3;
    QTest::newRow("half to even, down") << u"2.5"_s << 2;
    QTest::newRow("half to even, up") << u"3.5"_s << 4;
    QTest::newRow("above nought, rounded to it") << u"0.5"_s << 0;
    QTest::newRow("blanks within") << u" 0 0 7 "_s << 7;
    QTest::newRow("words behind") << u"4 please"_s << 4;
    QTest::newRow("exponent") << u"0.8e1"_s << 8;
    QTest::newRow("hexadecimal") << u"&H6"_s << 6;
    QTest::newRow("a sign") << u"+5"_s << 5;
}

void TestPopReader::getMailConvertsTheTypedNumber()
{
    QFETCH(QString, typed);
    QFETCH(int, number);
    Reader reader;
    reader.logIn(9);
    QCOMPARE(reader.getMail(typed), fetch(number));
    QCOMPARE(reader.form->MailIndex->text(), typed);
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::getMailRefusesWhatIsNotThere_data()
{
    QTest::addColumn<QString>("typed");
    for (const char *typed : {"abc", "0", "-3", "10", "9.4", "", "1e9", "40000", "-0.5", "&HFFFF",
                              "99999999999", "%1", "<b>no</b>"})
        QTest::newRow(*typed ? typed : "nothing") << QString::fromLatin1(typed);
}

void TestPopReader::getMailRefusesWhatIsNotThere()
{
    QFETCH(QString, typed);
    Reader reader;
    reader.logIn(9);
    reader.prompts
        .expect(u"Mail number : "_s + typed + u" not available in your mailbox..."_s, u"Mail not avilable"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None);
    QCOMPARE(reader.getMail(typed), QStringList());
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.form->MailIndex->text(), typed);
}

void TestPopReader::getMailEmptiesTheContentsEvenWhenItRefuses()
{
    Reader reader;
    reader.logIn(9);
    Q_EMIT reader.mail->MailText(u"the old message"_s);
    QString contents = u"unset"_s;
    reader.prompts.expect(u"Mail number : 0 not available in your mailbox..."_s, u"Mail not avilable"_s)
        .meanwhile([&] { contents = reader.form->MailContents->text(); });
    reader.getMail(u"0"_s);
    QCOMPARE(contents, QString());
}

void TestPopReader::getMailLeavesCurrentMailAlone()
{
    Reader reader;
    reader.logIn(9);
    reader.press(u"NextMail"_s);
    QCOMPARE(reader.getMail(u"7"_s), fetch(7));
    QCOMPARE(reader.form->CurrentMail.value(), 2);
    QCOMPARE(reader.press(u"NextMail"_s), fetch(3));
    reader.getMail(u"8"_s);
    QCOMPARE(reader.press(u"PrevMail"_s), fetch(2));
}

void TestPopReader::aNumberBeyondAllNumbersIsAnOverflow()
{
    Reader reader;
    reader.logIn(9);
    reader.prompts.expectError(error::Overflow);
    QCOMPARE(reader.getMail(u"1e999"_s), QStringList());
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.end.count(), 1);
}

void TestPopReader::deleteAsksNothing()
{
    Reader reader;
    reader.logIn(9);
    QCOMPARE(reader.press(u"DeleteMailCommand"_s), QStringList{u"DeleteNow = True"_s});
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::listAsksForTheListing()
{
    Reader reader;
    reader.logIn(9);
    QCOMPARE(reader.press(u"ListMailCommand"_s), QStringList{u"ListNow = True"_s});
}

void TestPopReader::whatAnAssignmentRaisesEndsTheProgram()
{
    Reader reader;
    reader.mail->onCall = [](const QString &call) {
        if (call.startsWith(u"POPUser"))
            throw RuntimeError(error::InvalidPropertyValue);
    };
    reader.prompts.expectError(error::InvalidPropertyValue);
    QCOMPARE(reader.press(u"Login"_s), QStringList({u"POPServer = "_s, u"POPUser = "_s}));
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.end.count(), 1);
}

void TestPopReader::hasMailSaysSo()
{
    Reader reader;
    reader.logIn(3);
    reader.prompts.expect(u"You have mail(s) !!"_s, u"Vandrel"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None);
    Q_EMIT reader.mail->HasMail(true);
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
}

void TestPopReader::hasMailFalseDisablesTheMailButtons()
{
    Reader reader;
    reader.logIn(0);
    Q_EMIT reader.mail->HasMail(false);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::noMailSaysSoAndDisablesTheMailButtons()
{
    Reader reader;
    reader.logIn(0);
    reader.form->MailPresent = true;
    QStringList enabledDuringTheBox;
    reader.prompts.expect(u"You have not mail !!!"_s, u"Vandrel"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None)
        .meanwhile([&] { enabledDuringTheBox = reader.enabledMailButtons(); });
    Q_EMIT reader.mail->NoMail(7);
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(enabledDuringTheBox, mailButtonNames);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(!reader.form->MailPresent);
}

void TestPopReader::downloadedSaysSo()
{
    Reader reader;
    reader.prompts.expect(u"Mail downloaded !!!"_s, u"Vandrel"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None);
    Q_EMIT reader.mail->MailDownloaded(true);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::aFailedDownloadSaysNothing()
{
    const Reader reader;
    Q_EMIT reader.mail->MailDownloaded(false);
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::disconnectedReturnsToIdle()
{
    Reader reader;
    reader.press(u"Login"_s);
    reader.logIn(3);
    Q_EMIT reader.mail->Disconnected(true);
    QVERIFY(reader.form->Login->isEnabled());
    QCOMPARE(reader.enabledMailButtons(), QStringList());
}

void TestPopReader::disconnectedFalseChangesNothing()
{
    Reader reader;
    reader.press(u"Login"_s);
    reader.logIn(3);
    Q_EMIT reader.mail->Disconnected(false);
    QVERIFY(!reader.form->Login->isEnabled());
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
}

void TestPopReader::loggedInEnablesTheMailButtons()
{
    const Reader reader;
    reader.press(u"Login"_s);
    Q_EMIT reader.mail->LoggedIn(true);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
    QVERIFY(!reader.form->Login->isEnabled());
}

void TestPopReader::aFailedLoginChangesNothing()
{
    const Reader reader;
    reader.press(u"Login"_s);
    Q_EMIT reader.mail->LoggedIn(false);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(!reader.form->Login->isEnabled());
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::mailboxStat()
{
    const Reader reader;
    Q_EMIT reader.mail->MailboxStat(12, 345678);
    QCOMPARE(reader.form->TotalAvailableMail->text(), u"12"_s);
    QCOMPARE(reader.form->TotalMailSizeOnPOPServer->text(), u"345678"_s);
    Q_EMIT reader.mail->MailboxStat(std::numeric_limits<std::int16_t>::max(),
                                    std::numeric_limits<std::int32_t>::max());
    QCOMPARE(reader.form->TotalAvailableMail->text(), u"32767"_s);
    QCOMPARE(reader.form->TotalMailSizeOnPOPServer->text(), u"2147483647"_s);
}

void TestPopReader::mailTextReplacesTheContents()
{
    const Reader reader;
    Q_EMIT reader.mail->MailText(u"From: a\r\n\r\nHello"_s);
    QCOMPARE(reader.form->MailContents->text(), u"From: a\r\n\r\nHello\r\n"_s);
    Q_EMIT reader.mail->MailText(u"<b>{\\rtf1 plain}</b>"_s);
    QCOMPARE(reader.form->MailContents->text(), u"<b>{\\rtf1 plain}</b>\r\n"_s);
}

void TestPopReader::aLongMailStartsAtItsBeginning()
{
    Reader reader;
    reader.logIn(3);
    QVERIFY(reader.show());
    const QScrollBar *bar = reader.form->MailContents->verticalScrollBar();
    for (const QString &text : {u"line\r\n"_s, u"another\r\n"_s}) {
        reader.press(u"NextMail"_s);
        Q_EMIT reader.mail->MailText(text.repeated(1000));
        QTRY_VERIFY(bar->maximum() > 0);
        QCOMPARE(bar->value(), 0);
        QCOMPARE(reader.form->MailContents->SelStart(), 0);
        QTest::keyClick(reader.form->MailContents, Qt::Key_PageDown);
        QVERIFY(bar->value() > 0);
    }
}

void TestPopReader::statusTextIsReplaced()
{
    const Reader reader;
    Q_EMIT reader.mail->StatusText(u"Connecting"_s);
    QCOMPARE(reader.form->POPConnectionStatus->text(), u"Connecting\r\n"_s);
    Q_EMIT reader.mail->StatusText(u"Logged in"_s);
    QCOMPARE(reader.form->POPConnectionStatus->text(), u"Logged in\r\n"_s);
}

void TestPopReader::anErrorIsShown()
{
    Reader reader;
    reader.press(u"Login"_s);
    reader.prompts.expect(u"No route to mail.example.org."_s, u" Error connection occured !!"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Critical);
    Q_EMIT reader.mail->Error(true, 0, u"No route to mail.example.org."_s);
    QVERIFY(reader.prompts.allShown());
    // The window does not connect again by itself, and waits for the control to say that the session has ended.
    QVERIFY(!reader.form->Login->isEnabled());
    QCOMPARE(reader.mail->takeCalls(), QStringList());
}

void TestPopReader::anErrorThatIsNoneIsNotShown()
{
    const Reader reader;
    Q_EMIT reader.mail->Error(false, 17, u"nothing"_s);
    QCOMPARE(reader.prompts.shown(), 0);
}

void TestPopReader::theListingIsShown()
{
    Reader reader;
    const QString listing = u"1 120 octets\r\n2 4711 octets\r\n"_s;
    reader.prompts.expect(listing, u"Mail listing on POP server"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Information);
    Q_EMIT reader.mail->MailList(listing);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::mailDeletedNamesTheNumber()
{
    Reader reader;
    reader.prompts.expect(u"Mail no : 3 on POP server has been deleted !"_s, u" Mail has been deleted "_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::None);
    Q_EMIT reader.mail->MailDeleted(3);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::busyDisablesTheMailButtonsAlone()
{
    const Reader reader;
    reader.press(u"Login"_s);
    Q_EMIT reader.mail->Busy(true);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(!reader.form->Login->isEnabled());
    QVERIFY(reader.form->Disconnect->isEnabled());
    Q_EMIT reader.mail->Busy(false);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
    QVERIFY(!reader.form->Login->isEnabled());
}

// The events in the order that the control promises, from the login to the end.
void TestPopReader::aWholeSession()
{
    Reader reader;
    reader.mail->count = 2;
    reader.press(u"Login"_s);
    Q_EMIT reader.mail->Busy(true);
    Q_EMIT reader.mail->LoggedIn(true);
    Q_EMIT reader.mail->MailboxStat(2, 800);
    Q_EMIT reader.mail->Busy(false);
    reader.prompts.expect(u"You have mail(s) !!"_s, u"Vandrel"_s);
    Q_EMIT reader.mail->HasMail(true);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);

    QCOMPARE(reader.press(u"NextMail"_s), fetch(2));
    Q_EMIT reader.mail->Busy(true);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    Q_EMIT reader.mail->MailText(u"Hello"_s);
    reader.prompts.expect(u"Mail downloaded !!!"_s, u"Vandrel"_s);
    Q_EMIT reader.mail->MailDownloaded(true);
    Q_EMIT reader.mail->Busy(false);
    QCOMPARE(reader.enabledMailButtons(), mailButtonNames);
    QCOMPARE(reader.form->MailContents->text(), u"Hello\r\n"_s);

    reader.press(u"Disconnect"_s);
    Q_EMIT reader.mail->Busy(true);
    Q_EMIT reader.mail->Busy(false);
    Q_EMIT reader.mail->Disconnected(true);
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(reader.form->Login->isEnabled());
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::anEmptyMailbox()
{
    Reader reader;
    reader.press(u"Login"_s);
    Q_EMIT reader.mail->Busy(true);
    Q_EMIT reader.mail->LoggedIn(true);
    Q_EMIT reader.mail->MailboxStat(0, 0);
    Q_EMIT reader.mail->Busy(false);
    reader.prompts.expect(u"You have not mail !!!"_s, u"Vandrel"_s);
    Q_EMIT reader.mail->NoMail(0);
    QVERIFY(reader.prompts.allShown());
    QCOMPARE(reader.enabledMailButtons(), QStringList());
    QVERIFY(!reader.form->Login->isEnabled());
    QCOMPARE(reader.form->TotalAvailableMail->text(), u"0"_s);
}

void TestPopReader::anOpenBoxHoldsTheEventsBehindIt()
{
    Reader reader;
    FakePOPMail *mail = reader.mail;
    const Shown status = raiseAroundABox(
        reader.prompts.expect(u"Mail downloaded !!!"_s, u"Vandrel"_s), *mail,
        [mail] { Q_EMIT mail->MailDownloaded(true); },
        [mail] { Q_EMIT mail->StatusText(u"behind the box"_s); },
        [&reader] { return reader.form->POPConnectionStatus->text(); });
    QCOMPARE(status.duringTheBox, QString());
    QCOMPARE(status.afterwards, u"behind the box\r\n"_s);
    QVERIFY(reader.prompts.allShown());
}

void TestPopReader::aFloodOfEventsLeavesRoomToPaint()
{
    const Reader reader;
    QVERIFY(reader.show());
    QVERIFY(paintsDuringAFlood(*reader.form->POPConnectionStatus->viewport(), 5, [&reader](int number) {
        Q_EMIT reader.mail->StatusText(u"%1 MB\r\n"_s.arg(number));
    }));
}

void TestPopReader::theFocusReturnsToTheButtonThatWasPressed()
{
    Reader reader;
    reader.logIn(9);
    QVERIFY(reader.show());
    reader.form->NextMail->setFocus();
    QTest::keyClick(reader.form->NextMail, Qt::Key_Space);
    Q_EMIT reader.mail->Busy(true);
    QVERIFY(!reader.form->NextMail->hasFocus());
    Q_EMIT reader.mail->Busy(false);
    QVERIFY(reader.form->NextMail->hasFocus());
}

void TestPopReader::theFocusStaysWhereTheUserHasGone()
{
    Reader reader;
    reader.logIn(9);
    QVERIFY(reader.show());
    reader.form->NextMail->setFocus();
    Q_EMIT reader.mail->Busy(true);
    reader.form->MailIndex->setFocus();
    Q_EMIT reader.mail->Busy(false);
    QVERIFY(reader.form->MailIndex->hasFocus());
}

void TestPopReader::closingTheWindowTakesTheControlWithIt()
{
    Reader reader;
    reader.logIn(3);
    QVERIFY(reader.show());
    QStringList told;
    reader.mail->onCall = [&told](const QString &call) { told.append(call); };
    QVERIFY(closingTakes(*reader.form, reader.mail));
    QCOMPARE(told, QStringList());
}

QTEST_MAIN(TestPopReader)
#include "TestPopReader.moc"
