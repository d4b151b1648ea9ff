#pragma once

#include <cstdint>
#include <memory>

#include <QWidget>

#include "controls/FTPClient.h"
#include "controls/LocalFolders.h"

class QGroupBox;
class QHBoxLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;

namespace vandrel {

class DirListBox;
class DriveListBox;
class FileListBox;
class ListBox;
class RemoteNameBox;
class StatusBar;
class TransferMeter;

/// The FTP client: connects to one server, lists and manages its current directory, and transfers one file at a time
/// to or from a local file. Every step is reported in the status bar alone. The window does not wait for one
/// operation to end before it asks for the next; the control does them in order.
class frmFTP : public QWidget
{
    Q_OBJECT

public:
    /// `folders` is what the local lists show; shared, never null.
    frmFTP(std::unique_ptr<FTPClient> ftpClient, const std::shared_ptr<LocalFolders> &folders);
    ~frmFTP() override;

    QGroupBox *FTPServerFrame = nullptr;
    QLineEdit *FTPserveraddress = nullptr;
    QLineEdit *Username = nullptr;
    QLineEdit *Password = nullptr;
    QPushButton *ConnectButton = nullptr;
    QPushButton *CloseButton = nullptr;
    QPushButton *AbortButton = nullptr;
    QPushButton *InitialPathButton = nullptr;

    QGroupBox *RemoteFileFrame = nullptr;
    QRadioButton *Option1 = nullptr;
    QRadioButton *Option2 = nullptr;
    QPushButton *FileListButton = nullptr;
    QPushButton *RenameFileButton = nullptr;
    QPushButton *DeleteFileButton = nullptr;
    QPushButton *RemoveDirectoryButton = nullptr;
    QPushButton *CreateDirectoryButton = nullptr;
    QPushButton *CurrentDirectoryButton = nullptr;
    QPushButton *SetDirectoryButton = nullptr;
    QPushButton *DownloadButton = nullptr;
    RemoteNameBox *RemoteFile = nullptr;
    ListBox *RemoteFilesList = nullptr;

    QGroupBox *LocalFileFrame = nullptr;
    QPushButton *UploadButton = nullptr;
    QLineEdit *LocalFile = nullptr;
    DriveListBox *Drive1 = nullptr;
    DirListBox *Dir1 = nullptr;
    FileListBox *File1 = nullptr;

    vandrel::StatusBar *StatusBar = nullptr;
    TransferMeter *transferMeter = nullptr;
    std::unique_ptr<FTPClient> FTPClient1;

    /// The directory typed at the "Initial Path" prompt.
    QString InitialPath;
    /// True once that prompt has been answered.
    bool InitialPathSet = false;
    /// The last answer to the rename prompt.
    QString NewRemoteName;
    /// The chosen local file, or the local directory when it has no files.
    QString LocalFilePath;

    // The handlers. Those of the local lists raise what reading a folder raises.
    void Form_Load();
    void ConnectButton_Click();
    void CloseButton_Click();
    void AbortButton_Click();
    void InitialPathButton_Click();
    void Option1_Click();
    void Option2_Click();
    void FileListButton_Click();
    void RenameFileButton_Click();
    void DeleteFileButton_Click();
    void CreateDirectoryButton_Click();
    void RemoveDirectoryButton_Click();
    void SetDirectoryButton_Click();
    void CurrentDirectoryButton_Click();
    void DownloadButton_Click();
    void UploadButton_Click();
    /// Raises Overflow (6) for a "/" beyond position 32770 of a line.
    void RemoteFilesList_Click();
    void Drive1_Change();
    void Dir1_Change();
    void File1_PathChange();
    void File1_Click();
    void StatusBar_Click();
    void FTPClient1_Error(bool failed, std::int32_t number, const QString &text);
    void FTPClient1_Connected();
    void FTPClient1_Downloaded();
    void FTPClient1_Uploaded();
    void FTPClient1_FileDeleted();
    void FTPClient1_FileRenamed();
    /// Raises Overflow (6) for a line of more than 32767 characters.
    void FTPClient1_FileList(const QString &listing);
    void FTPClient1_CurrentDirectory(const QString &path);
    void FTPClient1_DirectoryCreated();
    void FTPClient1_DirectoryRemoved();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange(const std::shared_ptr<LocalFolders> &folders);
    void arrangeServer();
    void arrangeRemote();
    QLayout *arrangeRemoteButtons();
    void arrangeLocal(const std::shared_ptr<LocalFolders> &folders);
    void setTabOrders();
    void connectButtons();
    void connectLists();
    void connectControl();
    void EnableRemoteControls(bool enabled);
    void setStatus(const QString &text);
    QString Server() const;
    QString remoteName() const;
    bool hasRemoteName() const;

    template<typename Widget>
    Widget *named(Widget *widget, const char *name) const;
};

} // namespace vandrel
