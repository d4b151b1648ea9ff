#include <memory>
#include <optional>

#include <QApplication>
#include <QClipboard>
#include <QGroupBox>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
#include <QTest>

#include "controls/ListBox.h"
#include "controls/TextBox.h"
#include "internet/frmSend.h"
#include "tests/support/FakeDialogs.h"
#include "tests/support/FakeSmtp.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;

/// The SMTP mail sender on a scripted control.
class TestMailSender : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindow();
    void captions_data();
    void captions();
    void labelsAreBuddiesOfTheirBoxes_data();
    void labelsAreBuddiesOfTheirBoxes();
    void accessibleNames();
    void theTabOrderFollowsTheEye();
    void theMnemonics();
    void enterInTheFieldsSendsNothing();
    void theWindowFitsItsScreenAndCanBeResized();

    void loadDoesNothing();
    void typingAssignsAtEveryKeystroke_data();
    void typingAssignsAtEveryKeystroke();
    void programMadeChangesAssignToo();
    void typingTheMessageAssignsAtEveryKeystroke();
    void pastingTheMessageAssignsOnce();
    void theMessageIsPlainTextAndKeptAsItIs();
    void typingTheCarbonCopyAssignsNothing();
    void aLongListOfRecipientsIsNotCut();
    void pastedLinesStayOnOneLine_data();
    void pastedLinesStayOnOneLine();

    void addAppendsTheChosenFile();
    void addStartsInTheFolderOfTheLastFile();
    void addReleasesTheDialog();
    void aCancelledDialogAddsNothing();
    void theSameFileMayBeAddedTwice();
    void removeTakesTheSelectedRow();
    void removeWithNothingSelectedDoesNothing();
    void removeTwiceTakesOneRow();

    void sendAssignsInOrder();
    void sendPassesEmptyFieldsOn();
    void sendListsTheAttachmentsAndLeavesTheLastSelected();
    void sendWithoutAttachmentsPassesAnEmptyList();
    void sendDisablesNothing();
    void whatAnAssignmentRaisesEndsTheProgram();

    void busyDisablesTheThreeButtons();
    void statusTextIsAppendedAsItIs();
    void mailSent();
    void disconnected();
    void disconnectedFalseChangesNothing();
    void anErrorIsShownAndEnablesTheButtons();
    void theLogGrowsAcrossSends();
    void theFieldsStayAfterASend();
    void theLogFollowsItsEnd();
    void theLogLeavesAReaderWhereTheyAre();
    void anOpenBoxHoldsTheEventsBehindIt();
    void aFloodOfEventsLeavesRoomToPaint();
    void theFocusReturnsToSend();
    void closingTheWindowTakesTheControlWithIt();
};

namespace {

// The sender on its fakes, and the hands of its user.
class Composer
{
public:
    Composer()
    {
        auto control = std::make_unique<FakeSmtp>();
        smtp = control.get();
        form = std::make_unique<frmSend>(std::move(control), [this] { return makeDialog(); });
    }

    bool show() const { return showActive(*form); }

    // Presses "&Add" and chooses that file, or cancels.
    void add(const std::optional<QString> &dosPath)
    {
        m_next = dosPath;
        form->AddFileCommand->click();
    }

    QStringList attachments() const
    {
        QStringList rows;
        for (int row = 0; row < form->FilesAttachmentListing->ListCount(); ++row)
            rows.append(form->FilesAttachmentListing->List(row));
        return rows;
    }

    QStringList send() const
    {
        smtp->takeCalls();
        form->SendCommand->click();
        return smtp->takeCalls();
    }

    // The enabled ones of the three buttons.
    QStringList enabled() const
    {
        QStringList names;
        for (const QPushButton *button : {form->SendCommand, form->AddFileCommand, form->RemoveFileCommand}) {
            if (button->isEnabled())
                names.append(button->objectName());
        }
        return names;
    }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    FakeSmtp *smtp = nullptr;
    QPointer<FakeCommonDialog> lastDialog;
    std::function<void()> whileDialogIsOpen;
    std::unique_ptr<frmSend> form;

private:
    std::unique_ptr<CommonDialog> makeDialog()
    {
        auto dialog = std::make_unique<FakeCommonDialog>();
        if (m_next)
            dialog->choose(*m_next);
        else
            dialog->cancel();
        dialog->meanwhile = whileDialogIsOpen;
        lastDialog = dialog.get();
        return dialog;
    }

    std::optional<QString> m_next;
};

const QStringList allThree{u"SendCommand"_s, u"AddFileCommand"_s, u"RemoveFileCommand"_s};

} // namespace

void TestMailSender::theWindow()
{
    const Composer composer;
    QCOMPARE(composer.form->objectName(), u"frmSend"_s);
    QCOMPARE(composer.form->windowTitle(), u"Send SMTP mail"_s);
    QVERIFY(composer.form->isWindow());
    QCOMPARE(composer.form->SendCommand->font().family(), u"MS Sans Serif"_s);
    QCOMPARE(composer.form->Frame2->parentWidget(), composer.form.get());
    for (const QWidget *held : {static_cast<QWidget *>(composer.form->FilesAttachmentListing),
                                static_cast<QWidget *>(composer.form->AddFileCommand),
                                static_cast<QWidget *>(composer.form->RemoveFileCommand)})
        QCOMPARE(held->parentWidget(), composer.form->Frame2);
    QCOMPARE(composer.form->StatusText->parentWidget(), composer.form->Frame1);
}

void TestMailSender::captions_data()
{
    QTest::addColumn<QString>("caption");
    QTest::newRow("Label1") << u" Mail Server Domain "_s;
    QTest::newRow("Label2") << u" To "_s;
    QTest::newRow("Label3") << u" From"_s;
    QTest::newRow("Label4") << u" Subject"_s;
    QTest::newRow("Label5") << u" Message"_s;
    QTest::newRow("Label6") << u" CC "_s;
    QTest::newRow("Frame1") << u"  Connection Status  "_s;
    QTest::newRow("Frame2") << u" File(s)  Attachment  "_s;
    QTest::newRow("AddFileCommand") << u"&Add"_s;
    QTest::newRow("RemoveFileCommand") << u"&Remove"_s;
    QTest::newRow("SendCommand") << u"&Send"_s;
}

void TestMailSender::captions()
{
    const Composer composer;
    QTEST(captionOf(*composer.form, QString::fromLatin1(QTest::currentDataTag())), "caption");
}

void TestMailSender::labelsAreBuddiesOfTheirBoxes_data()
{
    QTest::addColumn<QString>("box");
    QTest::newRow("Label1") << u"MailDomain"_s;
    QTest::newRow("Label2") << u"Recipient"_s;
    QTest::newRow("Label3") << u"Sender"_s;
    QTest::newRow("Label4") << u"MailSubject"_s;
    QTest::newRow("Label5") << u"MailMessage"_s;
    QTest::newRow("Label6") << u"CC"_s;
}

void TestMailSender::labelsAreBuddiesOfTheirBoxes()
{
    const Composer composer;
    QTEST(buddyOf(*composer.form, QString::fromLatin1(QTest::currentDataTag())), "box");
}

void TestMailSender::accessibleNames()
{
    const Composer composer;
    QCOMPARE(composer.form->StatusText->objectName(), u"StatusText"_s);
    QCOMPARE(composer.form->StatusText->accessibleName(), u"Connection Status"_s);
    QCOMPARE(composer.form->FilesAttachmentListing->objectName(), u"FilesAttachmentListing"_s);
    QVERIFY(!composer.form->FilesAttachmentListing->accessibleName().isEmpty());
}

void TestMailSender::theTabOrderFollowsTheEye()
{
    const Composer composer;
    QVERIFY(composer.show());
    const QStringList expected{u"MailDomain"_s,
                               u"Recipient"_s,
                               u"Sender"_s,
                               u"CC"_s,
                               u"MailSubject"_s,
                               u"MailMessage"_s,
                               u"FilesAttachmentListing"_s,
                               u"AddFileCommand"_s,
                               u"RemoveFileCommand"_s,
                               u"StatusText"_s,
                               u"SendCommand"_s};
    QCOMPARE(tabbedThrough(11), expected + QStringList{u"MailDomain"_s});
}

void TestMailSender::theMnemonics()
{
    Composer composer;
    QVERIFY(composer.show());
    composer.add(u"c:\\a.txt"_s);
    composer.form->FilesAttachmentListing->setListIndex(0);
    QTest::keyClick(composer.form->MailDomain, Qt::Key_R, Qt::AltModifier);
    QTRY_COMPARE(composer.attachments(), QStringList());
    // The dialog is answered as before.
    QTest::keyClick(composer.form->MailDomain, Qt::Key_A, Qt::AltModifier);
    QTRY_COMPARE(composer.attachments(), QStringList{u"c:\\a.txt"_s});
    QString lastCall;
    composer.smtp->onCall = [&lastCall](const QString &call) { lastCall = call; };
    QTest::keyClick(composer.form->MailDomain, Qt::Key_S, Qt::AltModifier);
    QTRY_COMPARE(lastCall, u"SendNow = True"_s);
}

void TestMailSender::enterInTheFieldsSendsNothing()
{
    const Composer composer;
    QVERIFY(composer.show());
    for (QLineEdit *box : composer.form->findChildren<QLineEdit *>()) {
        box->setFocus();
        QTest::keyClick(box, Qt::Key_Return);
    }
    QCOMPARE(composer.smtp->takeCalls(), QStringList());
}

void TestMailSender::theWindowFitsItsScreenAndCanBeResized()
{
    const Composer composer;
    QVERIFY(composer.show());
    const QSize available = composer.form->screen()->availableSize();
    QVERIFY(composer.form->width() <= available.width());
    QVERIFY(composer.form->height() <= available.height());
    QVERIFY(composer.form->minimumSize() != composer.form->maximumSize());
    const int before = composer.form->MailMessage->height();
    composer.form->resize(composer.form->size() + QSize(200, 90));
    QTRY_VERIFY(composer.form->MailMessage->height() > before);
}

void TestMailSender::loadDoesNothing()
{
    const Composer composer;
    QCOMPARE(composer.smtp->takeCalls(), QStringList());
    for (const QLineEdit *box : composer.form->findChildren<QLineEdit *>())
        QCOMPARE(box->text(), QString());
    QCOMPARE(composer.form->MailMessage->text(), QString());
    QCOMPARE(composer.form->StatusText->text(), QString());
    QCOMPARE(composer.attachments(), QStringList());
    QCOMPARE(composer.enabled(), allThree);
}

void TestMailSender::typingAssignsAtEveryKeystroke_data()
{
    QTest::addColumn<QString>("property");
    QTest::newRow("MailDomain") << u"ServerDomain"_s;
    QTest::newRow("MailSubject") << u"MessageSubject"_s;
    QTest::newRow("Recipient") << u"ToAddress"_s;
    QTest::newRow("Sender") << u"FromAddress"_s;
}

void TestMailSender::typingAssignsAtEveryKeystroke()
{
    QFETCH(QString, property);
    const Composer composer;
    auto *box = composer.form->findChild<QLineEdit *>(QString::fromLatin1(QTest::currentDataTag()));
    QTest::keyClicks(box, u" ab"_s);
    QTest::keyClick(box, Qt::Key_Backspace);
    QCOMPARE(composer.smtp->takeCalls(),
             QStringList({property + u" =  "_s, property + u" =  a"_s, property + u" =  ab"_s,
                          property + u" =  a"_s}));
}

void TestMailSender::programMadeChangesAssignToo()
{
    const Composer composer;
    composer.form->Recipient->setText(u"a@b"_s);
    composer.form->MailMessage->setText(u"Hello"_s);
    QCOMPARE(composer.smtp->takeCalls(), QStringList({u"ToAddress = a@b"_s, u"MessageBody = Hello"_s}));
}

void TestMailSender::typingTheMessageAssignsAtEveryKeystroke()
{
    const Composer composer;
    QTest::keyClicks(composer.form->MailMessage, u"ab"_s);
    QTest::keyClick(composer.form->MailMessage, Qt::Key_Return);
    QTest::keyClicks(composer.form->MailMessage, u"c"_s);
    QCOMPARE(composer.smtp->takeCalls(),
             QStringList({u"MessageBody = a"_s, u"MessageBody = ab"_s, u"MessageBody = ab\r\n"_s,
                          u"MessageBody = ab\r\nc"_s}));
}

void TestMailSender::pastingTheMessageAssignsOnce()
{
    const Composer composer;
    QApplication::clipboard()->setText(u"one\ntwo\r\nthree"_s);
    composer.form->MailMessage->paste();
    QCOMPARE(composer.smtp->takeCalls(), QStringList{u"MessageBody = one\r\ntwo\r\nthree"_s});
}

void TestMailSender::theMessageIsPlainTextAndKeptAsItIs()
{
    const Composer composer;
    const QString text = u"<b>5\u00A0000</b>\tx \U0001F600\r\n\r\n."_s;
    composer.form->MailMessage->setText(text);
    QCOMPARE(composer.smtp->takeCalls(), QStringList{u"MessageBody = "_s + text});
    QVERIFY(composer.send().contains(u"MessageBody = "_s + text));
}

void TestMailSender::typingTheCarbonCopyAssignsNothing()
{
    const Composer composer;
    QTest::keyClicks(composer.form->CC, u"c@d"_s);
    QCOMPARE(composer.smtp->takeCalls(), QStringList());
    QVERIFY(composer.send().contains(u"CcAddress = c@d"_s));
}

void TestMailSender::aLongListOfRecipientsIsNotCut()
{
    const Composer composer;
    const QString many = u"someone@mail.example.org, "_s.repeated(4000);
    composer.form->Recipient->setText(many);
    QCOMPARE(composer.smtp->takeCalls(), QStringList{u"ToAddress = "_s + many});
}

void TestMailSender::pastedLinesStayOnOneLine_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("MailDomain") << u"a@x.org b@x.org"_s;
    QTest::newRow("Sender") << u"a@x.org b@x.org"_s;
    QTest::newRow("MailSubject") << u"a@x.org b@x.org"_s;
    QTest::newRow("Recipient") << u"a@x.org, b@x.org"_s;
    QTest::newRow("CC") << u"a@x.org, b@x.org"_s;
}

void TestMailSender::pastedLinesStayOnOneLine()
{
    QFETCH(QString, text);
    const Composer composer;
    auto *box = composer.form->findChild<QLineEdit *>(QString::fromLatin1(QTest::currentDataTag()));
    QApplication::clipboard()->setText(u"a@x.org\r\nb@x.org\n"_s);
    box->paste();
    QCOMPARE(box->text(), text);
    const QStringList calls = composer.smtp->takeCalls();
    QCOMPARE(calls.size(), box == composer.form->CC ? 0 : 1);
    QVERIFY(calls.isEmpty() || calls.first().endsWith(u" = "_s + text));
    const QStringList sent = composer.send();
    QVERIFY(std::none_of(sent.begin(), sent.end(), [](const QString &call) { return call.contains(u'\n'); }));
}

void TestMailSender::addAppendsTheChosenFile()
{
    Composer composer;
    QString shown;
    QString title = u"unset"_s;
    QString filter = u"unset"_s;
    const QWidget *owner = nullptr;
    composer.whileDialogIsOpen = [&] {
        shown = composer.lastDialog->shown.join(u","_s);
        title = composer.lastDialog->DialogTitle;
        filter = composer.lastDialog->Filter;
        owner = composer.lastDialog->lastOwner;
    };
    composer.add(u"c:\\b.doc"_s);
    QCOMPARE(shown, u"Open "_s);
    QCOMPARE(title, QString());
    QCOMPARE(filter, QString());
    QCOMPARE(owner, composer.form.get());
    composer.add(u"c:\\a.txt"_s);
    QCOMPARE(composer.attachments(), QStringList({u"c:\\b.doc"_s, u"c:\\a.txt"_s}));
    QCOMPARE(composer.smtp->takeCalls(), QStringList());
}

void TestMailSender::addStartsInTheFolderOfTheLastFile()
{
    Composer composer;
    QStringList folders;
    composer.whileDialogIsOpen = [&] { folders.append(composer.lastDialog->InitDir); };
    composer.add(u"c:\\letters\\a.txt"_s);
    composer.add({});
    QCOMPARE(folders, QStringList({QString(), u"c:\\letters\\"_s}));
}

void TestMailSender::addReleasesTheDialog()
{
    Composer composer;
    composer.add(u"c:\\a.txt"_s);
    QVERIFY(composer.lastDialog.isNull());
    QVERIFY(!composer.form->ComDialog);
}

void TestMailSender::aCancelledDialogAddsNothing()
{
    Composer composer;
    composer.add({});
    QCOMPARE(composer.attachments(), QStringList());
    composer.add(u"c:\\a.txt"_s);
    composer.add({});
    QCOMPARE(composer.attachments(), QStringList{u"c:\\a.txt"_s});
}

void TestMailSender::theSameFileMayBeAddedTwice()
{
    Composer composer;
    composer.add(u"c:\\a.txt"_s);
    composer.add(u"c:\\a.txt"_s);
    QCOMPARE(composer.attachments(), QStringList({u"c:\\a.txt"_s, u"c:\\a.txt"_s}));
    QVERIFY(composer.send().contains(u"AttachmentList = c:\\a.txt;c:\\a.txt;"_s));
}

void TestMailSender::removeTakesTheSelectedRow()
{
    Composer composer;
    for (const QString &path : {u"c:\\a"_s, u"c:\\b"_s, u"c:\\c"_s})
        composer.add(path);
    composer.form->FilesAttachmentListing->setListIndex(1);
    composer.form->RemoveFileCommand->click();
    QCOMPARE(composer.attachments(), QStringList({u"c:\\a"_s, u"c:\\c"_s}));
    QCOMPARE(composer.prompts.shown(), 0);
}

void TestMailSender::removeWithNothingSelectedDoesNothing()
{
    Composer composer;
    composer.form->RemoveFileCommand->click();
    composer.add(u"c:\\a"_s);
    composer.form->RemoveFileCommand->click();
    QCOMPARE(composer.attachments(), QStringList{u"c:\\a"_s});
    // A list that merely has the keyboard's focus has nothing selected either.
    QVERIFY(composer.show());
    composer.form->FilesAttachmentListing->setFocus(Qt::TabFocusReason);
    composer.form->RemoveFileCommand->click();
    QCOMPARE(composer.attachments(), QStringList{u"c:\\a"_s});
    QCOMPARE(composer.prompts.shown(), 0);
    QCOMPARE(composer.end.count(), 0);
}

void TestMailSender::removeTwiceTakesOneRow()
{
    Composer composer;
    composer.add(u"c:\\a"_s);
    composer.add(u"c:\\b"_s);
    composer.form->FilesAttachmentListing->setListIndex(0);
    composer.form->RemoveFileCommand->click();
    composer.form->RemoveFileCommand->click();
    QCOMPARE(composer.attachments(), QStringList{u"c:\\b"_s});
}

void TestMailSender::sendAssignsInOrder()
{
    const Composer composer;
    composer.form->MailDomain->setText(u"mail.example.org "_s);
    composer.form->Recipient->setText(u" b@example.org"_s);
    composer.form->Sender->setText(u"Anna <a@example.org>"_s);
    composer.form->CC->setText(u"c@example.org"_s);
    composer.form->MailSubject->setText(u"Subject"_s);
    composer.form->MailMessage->setText(u"Text"_s);
    QCOMPARE(composer.send(),
             QStringList({u"AttachmentList = "_s, u"ServerDomain = mail.example.org "_s,
                          u"FromAddress = Anna <a@example.org>"_s, u"ToAddress =  b@example.org"_s,
                          u"CcAddress = c@example.org"_s, u"MessageSubject = Subject"_s,
                          u"MessageBody = Text"_s, u"SendNow = True"_s}));
}

void TestMailSender::sendPassesEmptyFieldsOn()
{
    const Composer composer;
    QCOMPARE(
        composer.send(),
        QStringList({u"AttachmentList = "_s, u"ServerDomain = "_s, u"FromAddress = "_s, u"ToAddress = "_s,
                     u"CcAddress = "_s, u"MessageSubject = "_s, u"MessageBody = "_s, u"SendNow = True"_s}));
    QCOMPARE(composer.prompts.shown(), 0);
}

void TestMailSender::sendListsTheAttachmentsAndLeavesTheLastSelected()
{
    Composer composer;
    composer.add(u"C:\\a.txt"_s);
    composer.add(u"C:\\b.doc"_s);
    composer.form->FilesAttachmentListing->setListIndex(0);
    QCOMPARE(composer.send().first(), u"AttachmentList = C:\\a.txt;C:\\b.doc;"_s);
    QCOMPARE(composer.form->FilesAttachmentListing->ListIndex(), 1);
    composer.form->RemoveFileCommand->click();
    QCOMPARE(composer.attachments(), QStringList{u"C:\\a.txt"_s});
}

void TestMailSender::sendWithoutAttachmentsPassesAnEmptyList()
{
    const Composer composer;
    QCOMPARE(composer.send().first(), u"AttachmentList = "_s);
    QCOMPARE(composer.form->FilesAttachmentListing->ListIndex(), -1);
}

void TestMailSender::sendDisablesNothing()
{
    const Composer composer;
    composer.send();
    QCOMPARE(composer.enabled(), allThree);
}

void TestMailSender::whatAnAssignmentRaisesEndsTheProgram()
{
    Composer composer;
    composer.smtp->onCall = [](const QString &call) {
        if (call.startsWith(u"ToAddress"))
            throw RuntimeError(error::InvalidPropertyValue);
    };
    composer.prompts.expectError(error::InvalidPropertyValue);
    QCOMPARE(composer.send().last(), u"ToAddress = "_s);
    QVERIFY(composer.prompts.allShown());
    QCOMPARE(composer.end.count(), 1);
}

void TestMailSender::busyDisablesTheThreeButtons()
{
    const Composer composer;
    Q_EMIT composer.smtp->Busy(true);
    QCOMPARE(composer.enabled(), QStringList());
    QVERIFY(composer.form->MailMessage->isEnabled());
    Q_EMIT composer.smtp->Busy(false);
    QCOMPARE(composer.enabled(), allThree);
}

void TestMailSender::statusTextIsAppendedAsItIs()
{
    const Composer composer;
    Q_EMIT composer.smtp->StatusText(u"Connected\r\n"_s);
    Q_EMIT composer.smtp->StatusText(u"half a "_s);
    Q_EMIT composer.smtp->StatusText(u"<i>line</i>\r\n"_s);
    QCOMPARE(composer.form->StatusText->text(), u"Connected\r\nhalf a <i>line</i>\r\n"_s);
}

void TestMailSender::mailSent()
{
    const Composer composer;
    Q_EMIT composer.smtp->MailSent(u"250 queued"_s);
    QCOMPARE(composer.form->StatusText->text(), u" Mail has been sent\r\n"_s);
    QCOMPARE(composer.prompts.shown(), 0);
}

void TestMailSender::disconnected()
{
    const Composer composer;
    Q_EMIT composer.smtp->Busy(true);
    Q_EMIT composer.smtp->Disconnected(true);
    QCOMPARE(composer.form->StatusText->text(), u"Diconnected from SMTP server....\r\n"_s);
    QCOMPARE(composer.enabled(), QStringList{u"SendCommand"_s});
    Q_EMIT composer.smtp->Busy(false);
    QCOMPARE(composer.enabled(), allThree);
}

void TestMailSender::disconnectedFalseChangesNothing()
{
    const Composer composer;
    Q_EMIT composer.smtp->Busy(true);
    Q_EMIT composer.smtp->Disconnected(false);
    QCOMPARE(composer.form->StatusText->text(), QString());
    QCOMPARE(composer.enabled(), QStringList());
}

void TestMailSender::anErrorIsShownAndEnablesTheButtons()
{
    Composer composer;
    Q_EMIT composer.smtp->Busy(true);
    QStringList enabledDuringTheBox{u"unset"_s};
    composer.prompts.expect(u"nobody@example.org: 550 No such user"_s, u"ERROR"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Critical)
        .meanwhile([&] { enabledDuringTheBox = composer.enabled(); });
    Q_EMIT composer.smtp->Error(u"nobody@example.org: 550 No such user"_s);
    QVERIFY(composer.prompts.allShown());
    QCOMPARE(enabledDuringTheBox, QStringList());
    QCOMPARE(composer.enabled(), allThree);
    QCOMPARE(composer.form->StatusText->text(), QString());
}

void TestMailSender::theLogGrowsAcrossSends()
{
    const Composer composer;
    for (int count = 0; count < 2; ++count) {
        composer.send();
        Q_EMIT composer.smtp->Busy(true);
        Q_EMIT composer.smtp->StatusText(u"250 Ok\r\n"_s);
        Q_EMIT composer.smtp->MailSent(u"250 queued"_s);
        Q_EMIT composer.smtp->Disconnected(true);
        Q_EMIT composer.smtp->Busy(false);
    }
    const QString once = u"250 Ok\r\n Mail has been sent\r\nDiconnected from SMTP server....\r\n"_s;
    QCOMPARE(composer.form->StatusText->text(), once + once);
}

void TestMailSender::theFieldsStayAfterASend()
{
    Composer composer;
    composer.form->MailSubject->setText(u"again"_s);
    composer.add(u"c:\\a"_s);
    const QStringList first = composer.send();
    Q_EMIT composer.smtp->MailSent(u"250 queued"_s);
    Q_EMIT composer.smtp->Disconnected(true);
    QCOMPARE(composer.send(), first);
}

void TestMailSender::theLogFollowsItsEnd()
{
    const Composer composer;
    QVERIFY(composer.show());
    for (int line = 0; line < 5000; ++line)
        Q_EMIT composer.smtp->StatusText(u"250 line %1\r\n"_s.arg(line));
    const QScrollBar *bar = composer.form->StatusText->verticalScrollBar();
    QVERIFY(bar->maximum() > 0);
    QCOMPARE(bar->value(), bar->maximum());
    QCOMPARE(composer.form->StatusText->blockCount(), 5001);
}

void TestMailSender::theLogLeavesAReaderWhereTheyAre()
{
    const Composer composer;
    QVERIFY(composer.show());
    for (int line = 0; line < 200; ++line)
        Q_EMIT composer.smtp->StatusText(u"250 line\r\n"_s);
    QScrollBar *bar = composer.form->StatusText->verticalScrollBar();
    bar->setValue(10);
    Q_EMIT composer.smtp->StatusText(u"250 one more\r\n"_s);
    QCOMPARE(bar->value(), 10);
    bar->setValue(bar->maximum());
    Q_EMIT composer.smtp->StatusText(u"250 and more\r\n"_s);
    QCOMPARE(bar->value(), bar->maximum());
}

void TestMailSender::anOpenBoxHoldsTheEventsBehindIt()
{
    Composer composer;
    FakeSmtp *smtp = composer.smtp;
    const Shown log = raiseAroundABox(
        composer.prompts.expect(u"refused"_s, u"ERROR"_s), *smtp,
        [smtp] { Q_EMIT smtp->Error(u"refused"_s); }, [smtp] { Q_EMIT smtp->Disconnected(true); },
        [&composer] { return composer.form->StatusText->text(); });
    QCOMPARE(log.duringTheBox, QString());
    QCOMPARE(log.afterwards, u"Diconnected from SMTP server....\r\n"_s);
    QVERIFY(composer.prompts.allShown());
}

void TestMailSender::aFloodOfEventsLeavesRoomToPaint()
{
    const Composer composer;
    QVERIFY(composer.show());
    QVERIFY(paintsDuringAFlood(*composer.form->StatusText->viewport(), 5, [&composer](int number) {
        Q_EMIT composer.smtp->StatusText(u"%1 MB\r\n"_s.arg(number));
    }));
}

void TestMailSender::theFocusReturnsToSend()
{
    const Composer composer;
    QVERIFY(composer.show());
    composer.form->SendCommand->setFocus();
    Q_EMIT composer.smtp->Busy(true);
    Q_EMIT composer.smtp->Busy(false);
    QVERIFY(composer.form->SendCommand->hasFocus());
}

void TestMailSender::closingTheWindowTakesTheControlWithIt()
{
    const Composer composer;
    QVERIFY(composer.show());
    Q_EMIT composer.smtp->Busy(true);
    QVERIFY(closingTakes(*composer.form, composer.smtp));
}

QTEST_MAIN(TestMailSender)
#include "TestMailSender.moc"
