#include "internet/frmFTP.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QCloseEvent>
#include <QRadioButton>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ListBox.h"
#include "controls/StatusBar.h"
#include "internet/RemoteNameBox.h"
#include "internet/TransferMeter.h"
#include "runtime/Integer.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"

#include <QGroupBox>
#include <QLineEdit>
#include <QPushButton>

namespace vandrel {

void frmFTP::Form_Load()
{
    EnableRemoteControls(false);
    if (StatusBar->Style() == vandrel::StatusBar::Normal)
        StatusBar->setStyle(vandrel::StatusBar::Simple);
    InitialPathSet = false;
}

void frmFTP::EnableRemoteControls(bool enabled)
{
    const std::array<QWidget *, 14> controls{RemoteFileFrame,
                                             UploadButton,
                                             DownloadButton,
                                             DeleteFileButton,
                                             RenameFileButton,
                                             FileListButton,
                                             SetDirectoryButton,
                                             CurrentDirectoryButton,
                                             CreateDirectoryButton,
                                             RemoveDirectoryButton,
                                             RemoteFilesList,
                                             RemoteFile,
                                             Option1,
                                             Option2};
    for (QWidget *control : controls)
        control->setEnabled(enabled);
}

void frmFTP::setStatus(const QString &text)
{
    StatusBar->setSimpleText(readableRemoteText(text));
}

QString frmFTP::Server() const
{
    return FTPserveraddress->text();
}

QString frmFTP::remoteName() const
{
    return RTrim(RemoteFile->name());
}

void frmFTP::ConnectButton_Click()
{
    FTPClient1->setServerAddress(Server());
    FTPClient1->setUserName(Username->text());
    FTPClient1->setPassword(Password->text());
    FTPClient1->setConnectNow(true);
    setStatus(tr("Connecting to  : ") + Server());
}

void frmFTP::CloseButton_Click()
{
    FTPClient1->setCloseNow(true);
    EnableRemoteControls(false);
    setStatus(tr("Disconnected from : ") + Server());
}

void frmFTP::AbortButton_Click()
{
    FTPClient1->setAbortNow(true);
    EnableRemoteControls(false);
}

// An empty answer names the root to the directory member, and the next connection changes to the empty path.
void frmFTP::InitialPathButton_Click()
{
    InitialPath = InputBox(tr("Enter initial directory "), tr("Initial Path"));
    if (!InitialPath.isEmpty())
        FTPClient1->setDirectoryPath(RTrim(InitialPath));
    else
        FTPClient1->setDirectoryName(QStringLiteral("/"));
    InitialPathSet = true;
}

void frmFTP::Option1_Click()
{
    FTPClient1->setTransferType(QStringLiteral("ascii"));
}

void frmFTP::Option2_Click()
{
    FTPClient1->setTransferType(QStringLiteral("binary"));
}

void frmFTP::FileListButton_Click()
{
    setStatus(tr("Receiving file list from : ") + Server());
    FTPClient1->setListNow(true);
}

void frmFTP::RenameFileButton_Click()
{
    NewRemoteName = InputBox(tr("Enter new remote file name "), tr("Rename remote file"));
    if (NewRemoteName.isEmpty()) {
        MsgBox(tr("New remote file name can't be blank !"), Buttons::OkOnly, BoxIcon::Information, QString());
    } else if (RemoteFile->text().isEmpty()) {
        MsgBox(tr("Remote file name can't be blank !"), Buttons::OkOnly, BoxIcon::Information, QString());
    } else {
        FTPClient1->setNewRemoteFileName(RTrim(NewRemoteName));
        FTPClient1->setRemoteFileName(remoteName());
        FTPClient1->setRenameNow(true);
    }
}

void frmFTP::DeleteFileButton_Click()
{
    FTPClient1->setRemoteFileName(remoteName());
    FTPClient1->setDeleteNow(true);
}

void frmFTP::CreateDirectoryButton_Click()
{
    FTPClient1->setDirectoryName(remoteName());
    FTPClient1->setCreateDirectoryNow(true);
}

void frmFTP::RemoveDirectoryButton_Click()
{
    FTPClient1->setDirectoryName(remoteName());
    FTPClient1->setRemoveDirectoryNow(true);
}

void frmFTP::SetDirectoryButton_Click()
{
    FTPClient1->setDirectoryPath(remoteName());
    FTPClient1->setChangeDirectoryNow(true);
}

void frmFTP::CurrentDirectoryButton_Click()
{
    FTPClient1->setReportDirectoryNow(true);
}

// False, and the user told, when no remote name is given.
bool frmFTP::hasRemoteName() const
{
    if (!RemoteFile->text().isEmpty())
        return true;
    MsgBox(tr("Please enter remote file name"));
    return false;
}

void frmFTP::DownloadButton_Click()
{
    if (!hasRemoteName())
        return;
    const QString question = RemoteFile->text() + tr(" will be download  from ") + Server()
        + tr(" with local file name : ") + LocalFile->text();
    if (MsgBox(question, Buttons::YesNo, BoxIcon::None, QString()) != Answer::Yes)
        return;
    FTPClient1->setRemoteFileName(remoteName());
    FTPClient1->setLocalFileName(RTrim(LocalFile->text()));
    FTPClient1->setDownloadNow(true);
    setStatus(tr("Downloading file from : ") + Server());
}

void frmFTP::UploadButton_Click()
{
    if (!hasRemoteName())
        return;
    const QString question = LocalFile->text() + tr(" will be upload to ") + Server()
        + tr(" with remote file name : ") + RemoteFile->text();
    if (MsgBox(question, Buttons::YesNo, BoxIcon::None, QString()) != Answer::Yes)
        return;
    setStatus(tr("Uploading file to ") + Server());
    FTPClient1->setRemoteFileName(remoteName());
    FTPClient1->setLocalFileName(RTrim(LocalFile->text()));
    FTPClient1->setUploadNow(true);
}

void frmFTP::RemoteFilesList_Click()
{
    const QString line = RemoteFilesList->Text();
    // The first "/" counted from 1, 0 when there is none; two characters stand between it and the name.
    const Integer n = line.indexOf(u'/') + 1 - 3;
    if (n >= 0)
        RemoteFile->setName(line.left(n));
}

void frmFTP::Drive1_Change()
{
    Dir1->setPath(Drive1->Drive());
}

void frmFTP::Dir1_Change()
{
    File1->setPath(Dir1->Path());
}

void frmFTP::File1_PathChange()
{
    if (File1->ListCount() > 0)
        File1->setListIndex(0);
    else
        LocalFilePath = Dir1->Path();
}

void frmFTP::File1_Click()
{
    LocalFilePath = inDosFolder(File1->Path(), File1->FileName());
    LocalFile->setText(LocalFilePath);
}

void frmFTP::StatusBar_Click()
{
    MsgBox(StatusBar->SimpleText(), Buttons::OkOnly, BoxIcon::Information, tr("Status Bar"));
}

void frmFTP::FTPClient1_Connected()
{
    Option1_Click();
    Option1->setChecked(true);
    RemoteFilesList->Clear();
    EnableRemoteControls(true);
    setStatus(tr("Connected to : ") + Server());
    if (InitialPathSet) {
        FTPClient1->setDirectoryPath(RTrim(InitialPath));
        FTPClient1->setChangeDirectoryNow(true);
    }
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_Error(bool, std::int32_t number, const QString &text)
{
    setStatus(u'(' + Str(number) + u')' + text);
}

void frmFTP::FTPClient1_Downloaded()
{
    setStatus(tr("File has been downloaded from ") + Server());
}

void frmFTP::FTPClient1_Uploaded()
{
    setStatus(tr("File has been uploaded to  : ") + Server());
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_FileDeleted()
{
    setStatus(tr("Remote File ") + RemoteFile->text() + tr(" has been deleted "));
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_FileRenamed()
{
    setStatus(tr("Remote File ") + RemoteFile->text() + tr(" rename to ") + NewRemoteName);
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_DirectoryRemoved()
{
    setStatus(tr("Remote Directory ") + RemoteFile->text() + tr(" has been removed "));
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_DirectoryCreated()
{
    FTPClient1->setListNow(true);
}

void frmFTP::FTPClient1_CurrentDirectory(const QString &path)
{
    RemoteFile->setName(path);
    setStatus(tr("Current directory is :  ") + path);
    FTPClient1->setListNow(true);
    setWindowTitle(tr("FTP - ") + FTPClient1->ServerAddress());
}

// A line counts when its carriage return is not the very last character; the one behind it goes with it, whatever it
// is. The lines are added at once, because a listing may have very many.
void frmFTP::FTPClient1_FileList(const QString &listing)
{
    RemoteFilesList->Clear();
    QStringList lines;
    QStringView s = listing;
    Integer i = 1;
    while (i < s.size()) {
        if (s[i - 1] == u'\r') {
            lines.append(s.first(i - 1).toString());
            s = s.sliced(i + 1);
            i = 1;
        } else {
            ++i;
        }
    }
    RemoteFilesList->addItems(lines);
}

void frmFTP::closeEvent(QCloseEvent *event)
{
    event->accept();
    FTPClient1.reset();
}

} // namespace vandrel
