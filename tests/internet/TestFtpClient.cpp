#include <memory>

#include <QGroupBox>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QTest>
#include <QTextDocument>
#include <QToolTip>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ListBox.h"
#include "controls/StatusBar.h"
#include "internet/ListingDelegate.h"
#include "internet/RemoteNameBox.h"
#include "internet/TransferMeter.h"
#include "internet/frmFTP.h"
#include "runtime/RuntimeError.h"
#include "tests/support/FakeFTPClient.h"
#include "tests/support/FakeLocalFolders.h"
#include "tests/support/FormChecks.h"
#include "tests/support/ScriptedPrompts.h"

using namespace Qt::StringLiterals;
using namespace vandrel;
using namespace vandrel::test;
using Calls = QStringList;

/// The FTP client's window on a scripted control.
class TestFtpClient : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void theWindowsControls();
    void loadingDisablesTheRemoteControls();
    void theServersAndTheLocalControlsStayEnabled();

    void connectPassesTheThreeTextsUntrimmed();
    void enterInAServerBoxConnects();
    void closeDisablesAndReports();
    void abortDisablesAndKeepsTheStatus();
    void theInitialPathIsTrimmed();
    void noInitialPathNamesTheRootInAnotherMember();
    void theTransferTypes();
    void refreshingTheFileList();

    void renaming();
    void renamingNeedsANewName();
    void renamingNeedsARemoteName();
    void deletingAsksNothing();
    void directoryCommandsTrimTrailingBlanksAlone_data();
    void directoryCommandsTrimTrailingBlanksAlone();
    void theCurrentDirectoryIsAskedFor();

    void downloading();
    void notDownloading();
    void uploading();
    void notUploading();
    void transfersNeedARemoteName();

    void pickingALine_data();
    void pickingALine();
    void pickingASlashTooFarRightIsAnOverflow();

    void choosingADriveShowsItsFirstFile();
    void openingAFolderShowsItsFirstFile();
    void aFolderWithoutFilesKeepsTheOldLocalFile();
    void aFileInARootHasOneSeparator();
    void clickingTheStatusBarShowsItsText();

    void connectedWithoutAnInitialPath();
    void connectedWithAnInitialPath();
    void connectedAfterAnEmptyInitialPath();
    void errorsAreShownInTheStatusBarAlone_data();
    void errorsAreShownInTheStatusBarAlone();
    void whatCompletedOperationsReport_data();
    void whatCompletedOperationsReport();
    void theCurrentDirectoryIsShown();

    void splittingTheListing_data();
    void splittingTheListing();
    void aLineTooLongIsAnOverflow();
    void aLongListingIsShownWhole();

    void namesThatAreNoTextAreShownReadably();
    void whatIsNotTypedOverStaysAsTheServerHasIt_data();
    void whatIsNotTypedOverStaysAsTheServerHasIt();

    void linesAreShownInColumns();
    void toolTipsShowWhatIsReadable();
    void theMeterShowsATransfer();
    void whatIsToldOfATransfer_data();
    void whatIsToldOfATransfer();
    void closingTheWindowEndsTheControl();
};

namespace {

/// The window, its control, and the hands of its user.
class Client
{
public:
    Client()
    {
        folders->add(u"c:\\"_s, {u"readme.txt"_s});
        folders->add(u"c:\\empty"_s);
        folders->add(u"c:\\letters"_s, {u"b.txt"_s, u"a.txt"_s});
        auto made = std::make_unique<FakeFTPClient>();
        control = made.get();
        form = std::make_unique<frmFTP>(std::move(made), folders);
        control->takeCalls();
    }

    QString status() const { return form->StatusBar->SimpleText(); }
    QStringList lines() const
    {
        QStringList lines;
        for (int i = 0; i < form->RemoteFilesList->ListCount(); ++i)
            lines.append(form->RemoteFilesList->List(i));
        return lines;
    }
    /// Connects, so that everything is enabled.
    void connectTo(const QString &server)
    {
        form->FTPserveraddress->setText(server);
        Q_EMIT control->Connected(true);
        control->takeCalls();
    }
    std::vector<QWidget *> remoteControls() const
    {
        return {form->RemoteFileFrame,
                form->UploadButton,
                form->DownloadButton,
                form->DeleteFileButton,
                form->RenameFileButton,
                form->FileListButton,
                form->SetDirectoryButton,
                form->CurrentDirectoryButton,
                form->CreateDirectoryButton,
                form->RemoveDirectoryButton,
                form->RemoteFilesList,
                form->RemoteFile,
                form->Option1,
                form->Option2};
    }

    ScriptedPrompts prompts;
    ProgramEndSpy end;
    std::shared_ptr<FakeLocalFolders> folders = std::make_shared<FakeLocalFolders>();
    FakeFTPClient *control = nullptr;
    std::unique_ptr<frmFTP> form;
};

} // namespace

void TestFtpClient::theWindowsControls()
{
    const Client client;
    const frmFTP &form = *client.form;
    QCOMPARE(form.windowTitle(), u"FTP client"_s);
    QCOMPARE(form.font().family(), u"Arial"_s);
    const std::pair<QString, QString> labels[] = {{u"Label1"_s, u"FTP server address"_s},
                                                  {u"Label2"_s, u"Username"_s},
                                                  {u"Label3"_s, u"Password"_s},
                                                  {u"Label4"_s, u"Transfer type"_s}};
    for (const auto &[name, caption] : labels)
        QCOMPARE(form.findChild<QLabel *>(name)->text(), caption);
    QCOMPARE(form.findChild<QLabel *>(u"Label1"_s)->buddy(), form.FTPserveraddress);
    const std::pair<QAbstractButton *, QString> buttons[] = {
        {form.ConnectButton, u"Connect"_s},
        {form.CloseButton, u"C l o s e"_s},
        {form.AbortButton, u"A b o r t"_s},
        {form.InitialPathButton, u"Initial Path"_s},
        {form.Option1, u"Ascii"_s},
        {form.Option2, u"Binary"_s},
        {form.FileListButton, u"Refresh File List"_s},
        {form.RenameFileButton, u"  Rename           File"_s},
        {form.DeleteFileButton, u"   Delete            File"_s},
        {form.RemoveDirectoryButton, u" Remove  Directory"_s},
        {form.CreateDirectoryButton, u" Create  Directory"_s},
        {form.CurrentDirectoryButton, u" Current Directory"_s},
        {form.SetDirectoryButton, u"    Set Directory"_s},
        {form.DownloadButton, u" Download        File"_s},
        {form.UploadButton, u"UpLoad"_s},
    };
    for (const auto &[button, caption] : buttons)
        QCOMPARE(button->text(), caption);
    QCOMPARE(form.FTPServerFrame->title(), QString());
    QCOMPARE(form.RemoteFileFrame->title(), u" Remote File(s) "_s);
    QCOMPARE(form.LocalFileFrame->title(), u" Local File(s) "_s);
    QCOMPARE(form.FTPserveraddress->text(), QString());
    QCOMPARE(form.Username->text(), u"anonymous"_s);
    QCOMPARE(form.Password->text(), QString());
    QCOMPARE(form.Password->echoMode(), QLineEdit::Normal);
    for (const char *name :
         {"FTPserveraddress", "Username", "Password", "RemoteFile", "RemoteFilesList", "LocalFile", "Drive1",
          "Dir1", "File1", "StatusBar", "CloseButton", "UploadButton"})
        QVERIFY2(form.findChild<QWidget *>(QString::fromLatin1(name)), name);
    QCOMPARE(form.RemoteFile->accessibleName(), u"Remote file"_s);
    QCOMPARE(form.RemoteFilesList->accessibleName(), u"Remote files"_s);
    QCOMPARE(form.LocalFile->accessibleName(), u"Local file"_s);
    QCOMPARE(form.Drive1->accessibleName(), u"Drive"_s);
    QCOMPARE(form.Dir1->accessibleName(), u"Folders"_s);
    QCOMPARE(form.File1->accessibleName(), u"Files"_s);
}

void TestFtpClient::loadingDisablesTheRemoteControls()
{
    const Client client;
    for (const QWidget *widget : client.remoteControls())
        QVERIFY2(!widget->isEnabled(), qPrintable(widget->objectName()));
    QCOMPARE(client.form->StatusBar->Style(), vandrel::StatusBar::Simple);
    QCOMPARE(client.status(), QString());
    QVERIFY(!client.form->InitialPathSet);
    QCOMPARE(client.form->LocalFile->text(), QString());
}

void TestFtpClient::theServersAndTheLocalControlsStayEnabled()
{
    const Client client;
    const frmFTP &form = *client.form;
    for (const QWidget *widget : std::initializer_list<QWidget *>{
             form.FTPServerFrame, form.ConnectButton, form.CloseButton, form.AbortButton,
             form.InitialPathButton, form.LocalFileFrame, form.LocalFile, form.Drive1, form.Dir1, form.File1})
        QVERIFY2(widget->isEnabled(), qPrintable(widget->objectName()));
}

void TestFtpClient::connectPassesTheThreeTextsUntrimmed()
{
    const Client client;
    client.form->FTPserveraddress->setText(u" host "_s);
    client.form->Username->setText(u"me "_s);
    client.form->Password->setText(u" pw "_s);
    client.form->ConnectButton->click();
    QCOMPARE(client.control->takeCalls(),
             Calls({u"ServerAddress =  host "_s, u"UserName = me "_s, u"Password =  pw "_s,
                    u"ConnectNow = True"_s}));
    QCOMPARE(client.status(), u"Connecting to  :  host "_s);
    QVERIFY(client.form->ConnectButton->isEnabled());
}

void TestFtpClient::enterInAServerBoxConnects()
{
    const Client client;
    client.form->FTPserveraddress->setText(u"host"_s);
    QTest::keyClick(client.form->Password, Qt::Key_Return);
    QCOMPARE(client.control->takeCalls().last(), u"ConnectNow = True"_s);
}

void TestFtpClient::closeDisablesAndReports()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->CloseButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"CloseNow = True"_s}));
    QCOMPARE(client.status(), u"Disconnected from : host"_s);
    for (const QWidget *widget : client.remoteControls())
        QVERIFY(!widget->isEnabled());
}

void TestFtpClient::abortDisablesAndKeepsTheStatus()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->AbortButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"AbortNow = True"_s}));
    QCOMPARE(client.status(), u"Connected to : host"_s);
    for (const QWidget *widget : client.remoteControls())
        QVERIFY(!widget->isEnabled());
}

void TestFtpClient::theInitialPathIsTrimmed()
{
    Client client;
    client.prompts.expectInput(u"Enter initial directory "_s, u"Initial Path"_s)
        .offering(QString())
        .type(u" /pub  "_s);
    client.form->InitialPathButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"DirectoryPath =  /pub"_s}));
    QVERIFY(client.form->InitialPathSet);
    QCOMPARE(client.form->InitialPath, u" /pub  "_s);
    QVERIFY(client.prompts.allShown());
}

void TestFtpClient::noInitialPathNamesTheRootInAnotherMember()
{
    Client client;
    client.prompts.expectInput(u"Enter initial directory "_s, u"Initial Path"_s);
    client.form->InitialPathButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"DirectoryName = /"_s}));
    QVERIFY(client.form->InitialPathSet);
}

void TestFtpClient::theTransferTypes()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->Option2->click();
    client.form->Option1->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"TransferType = binary"_s, u"TransferType = ascii"_s}));
}

void TestFtpClient::refreshingTheFileList()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->FileListButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"ListNow = True"_s}));
    QCOMPARE(client.status(), u"Receiving file list from : host"_s);
}

void TestFtpClient::renaming()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u" old "_s);
    client.prompts.expectInput(u"Enter new remote file name "_s, u"Rename remote file"_s)
        .offering(QString())
        .type(u" new "_s);
    client.form->RenameFileButton->click();
    QCOMPARE(client.control->takeCalls(),
             Calls({u"NewRemoteFileName =  new"_s, u"RemoteFileName =  old"_s, u"RenameNow = True"_s}));
    Q_EMIT client.control->FileRenamed(true);
    QCOMPARE(client.status(), u"Remote File  old  rename to  new "_s);
    QCOMPARE(client.control->takeCalls(), Calls({u"ListNow = True"_s}));
}

void TestFtpClient::renamingNeedsANewName()
{
    Client client;
    client.connectTo(u"host"_s);
    client.prompts.expectInput(u"Enter new remote file name "_s, u"Rename remote file"_s);
    client.prompts.expect(u"New remote file name can't be blank !"_s, QString())
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Information);
    client.form->RenameFileButton->click();
    QVERIFY(client.prompts.allShown());
    QCOMPARE(client.control->takeCalls(), Calls());
}

void TestFtpClient::renamingNeedsARemoteName()
{
    Client client;
    client.connectTo(u"host"_s);
    client.prompts.expectInput(u"Enter new remote file name "_s, u"Rename remote file"_s).type(u"new"_s);
    client.prompts.expect(u"Remote file name can't be blank !"_s, QString())
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Information);
    client.form->RenameFileButton->click();
    QVERIFY(client.prompts.allShown());
    QCOMPARE(client.control->takeCalls(), Calls());
}

void TestFtpClient::deletingAsksNothing()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->DeleteFileButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"RemoteFileName = "_s, u"DeleteNow = True"_s}));
}

void TestFtpClient::directoryCommandsTrimTrailingBlanksAlone_data()
{
    QTest::addColumn<QString>("button");
    QTest::addColumn<Calls>("calls");
    QTest::newRow("create") << u"CreateDirectoryButton"_s
                            << Calls({u"DirectoryName =  x"_s, u"CreateDirectoryNow = True"_s});
    QTest::newRow("remove") << u"RemoveDirectoryButton"_s
                            << Calls({u"DirectoryName =  x"_s, u"RemoveDirectoryNow = True"_s});
    QTest::newRow("set") << u"SetDirectoryButton"_s
                         << Calls({u"DirectoryPath =  x"_s, u"ChangeDirectoryNow = True"_s});
}

void TestFtpClient::directoryCommandsTrimTrailingBlanksAlone()
{
    QFETCH(QString, button);
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u" x "_s);
    client.form->findChild<QPushButton *>(button)->click();
    QTEST(client.control->takeCalls(), "calls");
}

void TestFtpClient::theCurrentDirectoryIsAskedFor()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->CurrentDirectoryButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"ReportDirectoryNow = True"_s}));
}

void TestFtpClient::downloading()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u"a.txt "_s);
    client.form->LocalFile->setText(u"c:\\b.txt "_s);
    client.prompts
        .expect(u"a.txt  will be download  from host with local file name : c:\\b.txt "_s, QString())
        .buttons(Buttons::YesNo)
        .answer(Answer::Yes);
    client.form->DownloadButton->click();
    QCOMPARE(client.control->takeCalls(),
             Calls({u"RemoteFileName = a.txt"_s, u"LocalFileName = c:\\b.txt"_s, u"DownloadNow = True"_s}));
    QCOMPARE(client.status(), u"Downloading file from : host"_s);
}

void TestFtpClient::notDownloading()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u"a.txt"_s);
    client.prompts.expect(u"a.txt will be download  from host with local file name : "_s, QString())
        .answer(Answer::No);
    client.form->DownloadButton->click();
    QCOMPARE(client.control->takeCalls(), Calls());
    QCOMPARE(client.status(), u"Connected to : host"_s);
}

void TestFtpClient::uploading()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u"a.txt "_s);
    client.form->LocalFile->setText(u"c:\\b.txt "_s);
    client.prompts.expect(u"c:\\b.txt  will be upload to host with remote file name : a.txt "_s, QString())
        .buttons(Buttons::YesNo)
        .answer(Answer::Yes);
    client.form->UploadButton->click();
    QCOMPARE(client.control->takeCalls(),
             Calls({u"RemoteFileName = a.txt"_s, u"LocalFileName = c:\\b.txt"_s, u"UploadNow = True"_s}));
    QCOMPARE(client.status(), u"Uploading file to host"_s);
}

void TestFtpClient::notUploading()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u"a.txt"_s);
    client.prompts.expect(u" will be upload to host with remote file name : a.txt"_s, QString())
        .answer(Answer::No);
    client.form->UploadButton->click();
    QCOMPARE(client.control->takeCalls(), Calls());
}

void TestFtpClient::transfersNeedARemoteName()
{
    Client client;
    client.connectTo(u"host"_s);
    for (QPushButton *button : {client.form->DownloadButton, client.form->UploadButton}) {
        client.prompts.expect(u"Please enter remote file name"_s, u"Vandrel"_s).buttons(Buttons::OkOnly);
        button->click();
        QVERIFY(client.prompts.allShown());
    }
    QCOMPARE(client.control->takeCalls(), Calls());
}

void TestFtpClient::pickingALine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("picked");
    QTest::newRow("a name") << u"readme.txt  /File"_s << u"readme.txt"_s;
    QTest::newRow("a name with blanks") << u" a b   /File"_s << u" a b "_s;
    QTest::newRow("a slash at position 4") << u"x  /File"_s << u"x"_s;
    QTest::newRow("a slash at position 3") << u"  /File"_s << QString();
    QTest::newRow("a slash at position 2") << u" /File"_s << u"before"_s;
    QTest::newRow("a slash at position 1") << u"/File"_s << u"before"_s;
    QTest::newRow("no slash") << u"File"_s << u"before"_s;
    QTest::newRow("two slashes") << u"a  /b/c"_s << u"a"_s;
}

void TestFtpClient::pickingALine()
{
    QFETCH(QString, line);
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u"before"_s);
    Q_EMIT client.control->FileList(line + u"\r\n"_s);
    client.form->RemoteFilesList->setListIndex(0);
    QTEST(client.form->RemoteFile->text(), "picked");
}

void TestFtpClient::pickingASlashTooFarRightIsAnOverflow()
{
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFilesList->AddItem(QString(32769, u'x') + u'/');
    client.form->RemoteFilesList->AddItem(QString(32770, u'x') + u'/');
    client.form->RemoteFilesList->setListIndex(0);
    QCOMPARE(client.end.count(), 0);
    client.prompts.expectError(error::Overflow, u"Overflow"_s);
    client.form->RemoteFilesList->setListIndex(1);
    QCOMPARE(client.end.count(), 1);
}

void TestFtpClient::choosingADriveShowsItsFirstFile()
{
    Client client;
    client.folders->addDrive('d', u"STICK"_s);
    client.folders->add(u"d:\\"_s, {u"z.txt"_s, u"Y.txt"_s});
    client.form->Drive1->setDrive(u"d:"_s);
    QCOMPARE(client.form->Dir1->Path(), u"d:\\"_s);
    QCOMPARE(client.form->File1->Path(), u"d:\\"_s);
    QCOMPARE(client.form->File1->FileName(), u"Y.txt"_s);
    QCOMPARE(client.form->LocalFile->text(), u"d:\\Y.txt"_s);
}

void TestFtpClient::openingAFolderShowsItsFirstFile()
{
    const Client client;
    client.form->Dir1->setPath(u"c:\\letters"_s);
    QCOMPARE(client.form->LocalFile->text(), u"c:\\letters\\a.txt"_s);
    QCOMPARE(client.form->LocalFilePath, u"c:\\letters\\a.txt"_s);
    client.form->File1->setListIndex(1);
    QCOMPARE(client.form->LocalFile->text(), u"c:\\letters\\b.txt"_s);
}

void TestFtpClient::aFolderWithoutFilesKeepsTheOldLocalFile()
{
    const Client client;
    client.form->Dir1->setPath(u"c:\\letters"_s);
    client.form->Dir1->setPath(u"c:\\empty"_s);
    QCOMPARE(client.form->LocalFile->text(), u"c:\\letters\\a.txt"_s);
    QCOMPARE(client.form->LocalFilePath, u"c:\\empty"_s);
}

void TestFtpClient::aFileInARootHasOneSeparator()
{
    const Client client;
    client.form->File1->setListIndex(0);
    QCOMPARE(client.form->LocalFile->text(), u"c:\\readme.txt"_s);
}

void TestFtpClient::clickingTheStatusBarShowsItsText()
{
    Client client;
    client.form->show();
    const QString text = u"(550)"_s + QString(500, u'x');
    Q_EMIT client.control->Error(true, -550, QString(500, u'x'));
    client.prompts.expect(u"(-550)"_s + QString(500, u'x'), u"Status Bar"_s)
        .buttons(Buttons::OkOnly)
        .icon(BoxIcon::Information);
    QTest::mouseClick(client.form->StatusBar->findChild<QLabel *>(u"SimpleText"_s), Qt::LeftButton);
    QVERIFY(client.prompts.allShown());
    QVERIFY(client.form->minimumSizeHint().width() < 2000);
}

void TestFtpClient::connectedWithoutAnInitialPath()
{
    Client client;
    client.form->FTPserveraddress->setText(u"host"_s);
    client.form->RemoteFilesList->AddItem(u"old"_s);
    Q_EMIT client.control->Connected(true);
    QCOMPARE(client.control->takeCalls(), Calls({u"TransferType = ascii"_s, u"ListNow = True"_s}));
    QVERIFY(client.form->Option1->isChecked());
    QCOMPARE(client.lines(), QStringList());
    QCOMPARE(client.status(), u"Connected to : host"_s);
    for (const QWidget *widget : client.remoteControls())
        QVERIFY2(widget->isEnabled(), qPrintable(widget->objectName()));
}

void TestFtpClient::connectedWithAnInitialPath()
{
    Client client;
    client.prompts.expectInput(u"Enter initial directory "_s, u"Initial Path"_s).type(u"/pub "_s);
    client.form->InitialPathButton->click();
    client.control->takeCalls();
    for (int connection = 0; connection < 2; ++connection) {
        Q_EMIT client.control->Connected(true);
        QCOMPARE(client.control->takeCalls(),
                 Calls({u"TransferType = ascii"_s, u"DirectoryPath = /pub"_s, u"ChangeDirectoryNow = True"_s,
                        u"ListNow = True"_s}));
    }
}

void TestFtpClient::connectedAfterAnEmptyInitialPath()
{
    Client client;
    client.prompts.expectInput(u"Enter initial directory "_s, u"Initial Path"_s);
    client.form->InitialPathButton->click();
    client.control->takeCalls();
    Q_EMIT client.control->Connected(true);
    QCOMPARE(client.control->takeCalls(),
             Calls({u"TransferType = ascii"_s, u"DirectoryPath = "_s, u"ChangeDirectoryNow = True"_s,
                    u"ListNow = True"_s}));
}

void TestFtpClient::errorsAreShownInTheStatusBarAlone_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<QString>("shown");
    QTest::newRow("a server's") << 421 << u"( 421)Timeout"_s;
    QTest::newRow("none") << 0 << u"( 0)Timeout"_s;
    QTest::newRow("negative") << -5 << u"(-5)Timeout"_s;
    QTest::newRow("the largest") << 2147483647 << u"( 2147483647)Timeout"_s;
}

void TestFtpClient::errorsAreShownInTheStatusBarAlone()
{
    QFETCH(int, number);
    Client client;
    client.connectTo(u"host"_s);
    Q_EMIT client.control->Error(true, number, u"Timeout"_s);
    QTEST(client.status(), "shown");
    QVERIFY(client.form->RemoteFilesList->isEnabled());
    QCOMPARE(client.control->takeCalls(), Calls());
}

void TestFtpClient::whatCompletedOperationsReport_data()
{
    QTest::addColumn<QByteArray>("event");
    QTest::addColumn<QString>("status");
    QTest::addColumn<bool>("lists");
    QTest::newRow("downloaded") << QByteArray("Downloaded") << u"File has been downloaded from host"_s
                                << false;
    QTest::newRow("uploaded") << QByteArray("Uploaded") << u"File has been uploaded to  : host"_s << true;
    QTest::newRow("deleted") << QByteArray("FileDeleted") << u"Remote File  x  has been deleted "_s << true;
    QTest::newRow("removed") << QByteArray("DirectoryRemoved") << u"Remote Directory  x  has been removed "_s
                             << true;
    QTest::newRow("created") << QByteArray("DirectoryCreated") << u"Connected to : host"_s << true;
}

void TestFtpClient::whatCompletedOperationsReport()
{
    QFETCH(QByteArray, event);
    QFETCH(bool, lists);
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFile->setText(u" x "_s);
    QVERIFY(QMetaObject::invokeMethod(client.control, event.constData(), Q_ARG(bool, true)));
    QTEST(client.status(), "status");
    QCOMPARE(client.control->takeCalls(), lists ? Calls({u"ListNow = True"_s}) : Calls());
}

void TestFtpClient::theCurrentDirectoryIsShown()
{
    Client client;
    client.connectTo(u"host"_s);
    client.control->serverAddress = u"ftp.example.org"_s;
    Q_EMIT client.control->CurrentDirectory(u"/pub/a b"_s);
    QCOMPARE(client.form->RemoteFile->text(), u"/pub/a b"_s);
    QCOMPARE(client.status(), u"Current directory is :  /pub/a b"_s);
    QCOMPARE(client.control->takeCalls(), Calls({u"ListNow = True"_s}));
    QCOMPARE(client.form->windowTitle(), u"FTP - ftp.example.org"_s);
}

void TestFtpClient::splittingTheListing_data()
{
    QTest::addColumn<QString>("listing");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("two lines") << u"a\r\nb\r\n"_s << QStringList({u"a"_s, u"b"_s});
    QTest::newRow("no end") << u"a\r\nb"_s << QStringList({u"a"_s});
    QTest::newRow("an empty first line") << u"\r\na\r\n"_s << QStringList({QString(), u"a"_s});
    QTest::newRow("an empty line between") << u"a\r\n\r\nb\r\n"_s << QStringList({u"a"_s, QString(), u"b"_s});
    QTest::newRow("a bare carriage return at the end") << u"a\r\nb\r"_s << QStringList({u"a"_s});
    QTest::newRow("a carriage return alone") << u"\r"_s << QStringList();
    QTest::newRow("a carriage return swallows what follows")
        << u"a\rbc\r\n"_s << QStringList({u"a"_s, u"c"_s});
    QTest::newRow("line feeds are no ends") << u"a\nb\r\n"_s << QStringList({u"a\nb"_s});
    QTest::newRow("nothing") << QString() << QStringList();
}

void TestFtpClient::splittingTheListing()
{
    QFETCH(QString, listing);
    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFilesList->AddItem(u"old"_s);
    Q_EMIT client.control->FileList(listing);
    QTEST(client.lines(), "lines");
    QCOMPARE(client.form->RemoteFilesList->ListIndex(), -1);
}

void TestFtpClient::aLineTooLongIsAnOverflow()
{
    Client client;
    client.connectTo(u"host"_s);
    // The counter may reach 32767, the last position looked at before it.
    Q_EMIT client.control->FileList(QString(32766, u'x') + u"\r\n"_s);
    QCOMPARE(client.lines().value(0).size(), 32766);
    Q_EMIT client.control->FileList(QString(32767, u'x'));
    QCOMPARE(client.end.count(), 0);
    client.prompts.expectError(error::Overflow, u"Overflow"_s);
    Q_EMIT client.control->FileList(QString(32767, u'x') + u"\r\n"_s);
    QCOMPARE(client.end.count(), 1);
    QVERIFY(client.prompts.allShown());
}

void TestFtpClient::aLongListingIsShownWhole()
{
    constexpr int count = 50'000;
    Client client;
    client.connectTo(u"host"_s);
    Q_EMIT client.control->FileList(QString(u"a file  /File  1  2024-01-01\r\n"_s).repeated(count));
    QCOMPARE(client.form->RemoteFilesList->ListCount(), count);
}

void TestFtpClient::namesThatAreNoTextAreShownReadably()
{
    const QString name = u"Gr\uF0FC\uF0DFe\uF020"_s;
    const QString shown = u"Gr\u00FC\u00DFe\u2423"_s;
    Client client;
    client.connectTo(u"host"_s);
    Q_EMIT client.control->FileList(name + u"  /File\r\n "_s);
    client.form->RemoteFilesList->setListIndex(0);
    QCOMPARE(client.form->RemoteFile->text(), shown);
    client.form->DeleteFileButton->click();
    QCOMPARE(client.control->takeCalls(), Calls({u"RemoteFileName = %1"_s.arg(name), u"DeleteNow = True"_s}));
    Q_EMIT client.control->FileDeleted(true);
    QCOMPARE(client.status(), u"Remote File %1 has been deleted "_s.arg(shown));
    client.control->takeCalls();

    Q_EMIT client.control->CurrentDirectory(u'/' + name);
    QCOMPARE(client.form->RemoteFile->text(), u'/' + shown);
    QCOMPARE(client.status(), u"Current directory is :  /"_s + shown);
    client.control->takeCalls();
    client.form->SetDirectoryButton->click();
    QCOMPARE(client.control->takeCalls(),
             Calls({u"DirectoryPath = /%1"_s.arg(name), u"ChangeDirectoryNow = True"_s}));
}

void TestFtpClient::whatIsNotTypedOverStaysAsTheServerHasIt_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<int>("length");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("expected");
    QTest::newRow("behind") << 3 << 0 << u"/x"_s << u"a\uF0FCb/x"_s;
    QTest::newRow("before") << 0 << 0 << u"d/"_s << u"d/a\uF0FCb"_s;
    QTest::newRow("over it") << 1 << 1 << u"u"_s << u"aub"_s;
    QTest::newRow("beside it") << 0 << 1 << u"A"_s << u"A\uF0FCb"_s;
    QTest::newRow("all") << 0 << 3 << u"new"_s << u"new"_s;
}

void TestFtpClient::whatIsNotTypedOverStaysAsTheServerHasIt()
{
    QFETCH(int, position);
    QFETCH(int, length);
    QFETCH(QString, typed);
    QFETCH(QString, expected);
    RemoteNameBox box;
    box.setName(u"a\uF0FCb"_s);
    box.setSelection(position, length);
    if (length == 0)
        box.setCursorPosition(position);
    box.insert(typed);
    QCOMPARE(box.text().size(), expected.size());
    QCOMPARE(box.name(), expected);
}

void TestFtpClient::linesAreShownInColumns()
{
    const auto columns = ListingDelegate::columnsOf(u"big.iso  /File         1,234,567  2024-01-05 12:30"_s);
    QCOMPARE(columns.name, u"big.iso"_s);
    QCOMPARE(columns.kind, u"File"_s);
    QCOMPARE(columns.size, u"1,234,567"_s);
    QCOMPARE(columns.date, u"2024-01-05 12:30"_s);
    for (const QString &line : {u"big.iso"_s, u"x /"_s, u"/"_s, u"a  /File"_s, QString()}) {
        QCOMPARE(ListingDelegate::columnsOf(line).name, line);
        QCOMPARE(ListingDelegate::columnsOf(line).kind, QString());
    }
}

void TestFtpClient::toolTipsShowWhatIsReadable()
{
    const QString line = u"\uF0FC<b>  x\uF00D\uF020  /File         1,234,567  2024-01-05 12:30"_s;
    QTextDocument shown;
    shown.setHtml(ListingDelegate::toolTipOf(line));
    QCOMPARE(shown.toPlainText(), u"ü<b>  x␍␣\nFile 1,234,567 2024-01-05 12:30"_s);
    // Too long to be read is too long to be shown.
    QVERIFY(ListingDelegate::toolTipOf(QString(1'000'000, u'x')).size() < 2'000);

    Client client;
    client.connectTo(u"host"_s);
    client.form->RemoteFilesList->AddItem(line);
    client.form->show();
    const QModelIndex index = client.form->RemoteFilesList->model()->index(0, 0);
    const QPoint place = client.form->RemoteFilesList->visualRect(index).center();
    QWidget *viewport = client.form->RemoteFilesList->viewport();
    QHelpEvent asked(QEvent::ToolTip, place, viewport->mapToGlobal(place));
    QCoreApplication::sendEvent(viewport, &asked);
    QCOMPARE(QToolTip::text(), ListingDelegate::toolTipOf(line));
    QToolTip::hideText();
}

void TestFtpClient::theMeterShowsATransfer()
{
    Client client;
    client.connectTo(u"host"_s);
    const auto *meter = client.form->transferMeter;
    const auto *bar = meter->findChild<QProgressBar *>();
    QVERIFY(meter->isHidden());
    Q_EMIT client.control->TransferProgress(500, 2000);
    QVERIFY(!meter->isHidden());
    QCOMPARE(bar->value() * 4, bar->maximum());
    Q_EMIT client.control->TransferProgress(700, -1);
    QCOMPARE(bar->maximum(), 0);
    QCOMPARE(client.status(), u"Connected to : host"_s);
    Q_EMIT client.control->TransferProgress(0, 0);
    QVERIFY(meter->isHidden());
}

void TestFtpClient::whatIsToldOfATransfer_data()
{
    QTest::addColumn<qint64>("transferred");
    QTest::addColumn<qint64>("total");
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    QTest::newRow("at first") << qint64(1500) << qint64(3000) << qint64(499) << u"1.5 kB"_s;
    QTest::newRow("half way") << qint64(1'000'000) << qint64(2'000'000) << qint64(1000)
                              << u"1.0 MB/s, 0:01 left"_s;
    QTest::newRow("for hours") << qint64(1000) << qint64(3'662'000) << qint64(1000)
                               << u"1.0 kB/s, 1:01:01 left"_s;
    QTest::newRow("no total") << qint64(1000) << qint64(-1) << qint64(1000) << u"1.0 kB/s"_s;
    QTest::newRow("more than announced")
        << qint64(2000) << qint64(1000) << qint64(1000) << u"2.0 kB/s, 0:00 left"_s;
    QTest::newRow("standing still") << qint64(0) << qint64(1000) << qint64(1000) << u"0 bytes/s"_s;
}

void TestFtpClient::whatIsToldOfATransfer()
{
    QFETCH(qint64, transferred);
    QFETCH(qint64, total);
    QFETCH(qint64, milliseconds);
    QTEST(transferText(transferred, total, milliseconds), "text");
}

void TestFtpClient::closingTheWindowEndsTheControl()
{
    const Client client;
    QVERIFY(closingTakes(*client.form, client.control));
}

QTEST_MAIN(TestFtpClient)
#include "TestFtpClient.moc"
