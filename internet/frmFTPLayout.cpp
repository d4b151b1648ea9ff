#include <QGridLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QVBoxLayout>

#include "controls/CommandButton.h"
#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ListBox.h"
#include "controls/StatusBar.h"
#include "internet/FormParts.h"
#include "internet/ListingDelegate.h"
#include "internet/RemoteNameBox.h"
#include "internet/TransferMeter.h"
#include "internet/frmFTP.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

// The size of the window where the screen has room for it, in characters and lines of its font.
constexpr int windowColumns = 150;
constexpr int windowLines = 40;
constexpr int frameMargin = 40;

} // namespace

template<typename Widget>
Widget *frmFTP::named(Widget *widget, const char *name) const
{
    widget->setObjectName(QString::fromLatin1(name));
    return widget;
}

frmFTP::frmFTP(std::unique_ptr<FTPClient> ftpClient, const std::shared_ptr<LocalFolders> &folders)
    : QWidget(nullptr, Qt::Window), FTPClient1(std::move(ftpClient))
{
    setObjectName(QStringLiteral("frmFTP"));
    setWindowTitle(tr("FTP client"));
    setFont(QFont(QStringLiteral("Arial")));
    arrange(folders);
    setTabOrders();
    connectButtons();
    connectLists();
    connectControl();
    Form_Load();
}

frmFTP::~frmFTP() = default;

void frmFTP::arrange(const std::shared_ptr<LocalFolders> &folders)
{
    arrangeServer();
    arrangeRemote();
    arrangeLocal(folders);
    StatusBar = named(new vandrel::StatusBar(this), "StatusBar");
    transferMeter = named(new TransferMeter(this), "TransferMeter");
    StatusBar->addPermanentWidget(transferMeter);

    auto *sides = new QHBoxLayout;
    sides->addWidget(RemoteFileFrame, 3);
    sides->addWidget(LocalFileFrame, 2);
    auto *inner = new QVBoxLayout;
    inner->addWidget(FTPServerFrame);
    inner->addLayout(sides, 1);
    inner->setContentsMargins(9, 9, 9, 0);
    auto *column = new QVBoxLayout(this);
    column->setContentsMargins({});
    column->addLayout(inner, 1);
    column->addWidget(StatusBar);

    const QSize wanted(fontMetrics().averageCharWidth() * windowColumns,
                       fontMetrics().lineSpacing() * windowLines);
    resize(wanted.boundedTo(screen()->availableSize() - QSize(frameMargin, frameMargin)));
}

void frmFTP::arrangeServer()
{
    FTPServerFrame = named(new QGroupBox(this), "FTPServerFrame");
    FTPserveraddress = named(new QLineEdit(FTPServerFrame), "FTPserveraddress");
    Username = named(new QLineEdit(tr("anonymous"), FTPServerFrame), "Username");
    Password = named(new QLineEdit(FTPServerFrame), "Password");
    ConnectButton = named(new CommandButton(tr("Connect"), FTPServerFrame), "ConnectButton");
    CloseButton = named(new CommandButton(tr("C l o s e"), FTPServerFrame), "CloseButton");
    AbortButton = named(new CommandButton(tr("A b o r t"), FTPServerFrame), "AbortButton");
    InitialPathButton = named(new CommandButton(tr("Initial Path"), FTPServerFrame), "InitialPathButton");

    auto *grid = new QGridLayout(FTPServerFrame);
    grid->addWidget(
        captionOf(QStringLiteral("Label1"), tr("FTP server address"), FTPserveraddress, FTPServerFrame), 0,
        0);
    grid->addWidget(FTPserveraddress, 0, 1);
    grid->addWidget(captionOf(QStringLiteral("Label2"), tr("Username"), Username, FTPServerFrame), 1, 0);
    grid->addWidget(Username, 1, 1);
    grid->addWidget(captionOf(QStringLiteral("Label3"), tr("Password"), Password, FTPServerFrame), 2, 0);
    grid->addWidget(Password, 2, 1);
    auto *buttons = new QGridLayout;
    buttons->addWidget(ConnectButton, 0, 0);
    buttons->addWidget(CloseButton, 0, 1);
    buttons->addWidget(AbortButton, 1, 0);
    buttons->addWidget(InitialPathButton, 1, 1);
    grid->addLayout(buttons, 0, 2, 3, 1);
    grid->setColumnStretch(1, 1);
}

void frmFTP::arrangeRemote()
{
    RemoteFileFrame = named(new QGroupBox(tr(" Remote File(s) "), this), "RemoteFileFrame");
    Option1 = named(new QRadioButton(tr("Ascii"), RemoteFileFrame), "Option1");
    Option2 = named(new QRadioButton(tr("Binary"), RemoteFileFrame), "Option2");
    RemoteFile = named(new RemoteNameBox(RemoteFileFrame), "RemoteFile");
    RemoteFile->setAccessibleName(tr("Remote file"));
    RemoteFilesList = named(new ListBox(RemoteFileFrame), "RemoteFilesList");
    RemoteFilesList->setAccessibleName(tr("Remote files"));
    RemoteFilesList->setItemDelegate(new ListingDelegate(RemoteFilesList));

    auto *types = new QHBoxLayout;
    types->addWidget(captionOf(QStringLiteral("Label4"), tr("Transfer type"), nullptr, RemoteFileFrame));
    types->addWidget(Option1);
    types->addWidget(Option2);
    types->addStretch(1);
    auto *column = new QVBoxLayout(RemoteFileFrame);
    column->addLayout(types);
    column->addWidget(RemoteFile);
    column->addWidget(RemoteFilesList, 1);
    column->addLayout(arrangeRemoteButtons());
}

QLayout *frmFTP::arrangeRemoteButtons()
{
    constexpr int columns = 4;
    const auto button = [this](const char *name, const QString &caption) {
        return named(new CommandButton(caption, RemoteFileFrame), name);
    };
    FileListButton = button("FileListButton", tr("Refresh File List"));
    RenameFileButton = button("RenameFileButton", tr("  Rename           File"));
    DeleteFileButton = button("DeleteFileButton", tr("   Delete            File"));
    DownloadButton = button("DownloadButton", tr(" Download        File"));
    RemoveDirectoryButton = button("RemoveDirectoryButton", tr(" Remove  Directory"));
    CreateDirectoryButton = button("CreateDirectoryButton", tr(" Create  Directory"));
    CurrentDirectoryButton = button("CurrentDirectoryButton", tr(" Current Directory"));
    SetDirectoryButton = button("SetDirectoryButton", tr("    Set Directory"));
    auto *grid = new QGridLayout;
    int place = 0;
    for (QPushButton *each :
         {FileListButton, RenameFileButton, DeleteFileButton, DownloadButton, CurrentDirectoryButton,
          SetDirectoryButton, CreateDirectoryButton, RemoveDirectoryButton}) {
        grid->addWidget(each, place / columns, place % columns);
        ++place;
    }
    return grid;
}

void frmFTP::arrangeLocal(const std::shared_ptr<LocalFolders> &folders)
{
    LocalFileFrame = named(new QGroupBox(tr(" Local File(s) "), this), "LocalFileFrame");
    LocalFile = named(new QLineEdit(LocalFileFrame), "LocalFile");
    LocalFile->setAccessibleName(tr("Local file"));
    Drive1 = named(new DriveListBox(folders, LocalFileFrame), "Drive1");
    Dir1 = named(new DirListBox(folders, LocalFileFrame), "Dir1");
    File1 = named(new FileListBox(folders, LocalFileFrame), "File1");
    UploadButton = named(new CommandButton(tr("UpLoad"), LocalFileFrame), "UploadButton");

    auto *lists = new QHBoxLayout;
    lists->addWidget(Dir1, 1);
    lists->addWidget(File1, 1);
    auto *column = new QVBoxLayout(LocalFileFrame);
    column->addWidget(LocalFile);
    column->addWidget(Drive1);
    column->addLayout(lists, 1);
    column->addWidget(UploadButton);
}

void frmFTP::setTabOrders()
{
    const QList<QWidget *> order{FTPserveraddress,
                                 Username,
                                 Password,
                                 ConnectButton,
                                 CloseButton,
                                 AbortButton,
                                 InitialPathButton,
                                 Option1,
                                 Option2,
                                 RemoteFile,
                                 RemoteFilesList,
                                 FileListButton,
                                 RenameFileButton,
                                 DeleteFileButton,
                                 DownloadButton,
                                 CurrentDirectoryButton,
                                 SetDirectoryButton,
                                 CreateDirectoryButton,
                                 RemoveDirectoryButton,
                                 LocalFile,
                                 Drive1,
                                 Dir1,
                                 File1,
                                 UploadButton};
    for (qsizetype i = 1; i < order.size(); ++i)
        setTabOrder(order[i - 1], order[i]);
    FTPserveraddress->setFocus();
}

void frmFTP::connectButtons()
{
    const std::pair<QPushButton *, void (frmFTP::*)()> handlers[] = {
        {ConnectButton, &frmFTP::ConnectButton_Click},
        {CloseButton, &frmFTP::CloseButton_Click},
        {AbortButton, &frmFTP::AbortButton_Click},
        {InitialPathButton, &frmFTP::InitialPathButton_Click},
        {FileListButton, &frmFTP::FileListButton_Click},
        {RenameFileButton, &frmFTP::RenameFileButton_Click},
        {DeleteFileButton, &frmFTP::DeleteFileButton_Click},
        {CreateDirectoryButton, &frmFTP::CreateDirectoryButton_Click},
        {RemoveDirectoryButton, &frmFTP::RemoveDirectoryButton_Click},
        {SetDirectoryButton, &frmFTP::SetDirectoryButton_Click},
        {CurrentDirectoryButton, &frmFTP::CurrentDirectoryButton_Click},
        {DownloadButton, &frmFTP::DownloadButton_Click},
        {UploadButton, &frmFTP::UploadButton_Click},
    };
    for (const auto &[button, handler] : handlers)
        onEvent(button, &QPushButton::clicked, this, handler);
    onEvent(Option1, &QRadioButton::clicked, this, &frmFTP::Option1_Click);
    onEvent(Option2, &QRadioButton::clicked, this, &frmFTP::Option2_Click);
    // Enter in a box of the server connects, as people expect.
    for (QLineEdit *box : {FTPserveraddress, Username, Password})
        onEvent(box, &QLineEdit::returnPressed, this, &frmFTP::ConnectButton_Click);
}

void frmFTP::connectLists()
{
    onEvent(RemoteFilesList, &ListBox::Click, this, &frmFTP::RemoteFilesList_Click);
    onEvent(Drive1, &DriveListBox::Change, this, &frmFTP::Drive1_Change);
    onEvent(Dir1, &DirListBox::Change, this, &frmFTP::Dir1_Change);
    onEvent(File1, &FileListBox::PathChange, this, &frmFTP::File1_PathChange);
    onEvent(File1, &ListBox::Click, this, &frmFTP::File1_Click);
    onEvent(StatusBar, &vandrel::StatusBar::Click, this, &frmFTP::StatusBar_Click);
}

void frmFTP::connectControl()
{
    const FTPClient *control = FTPClient1.get();
    onEvent(control, &FTPClient::Error, this, &frmFTP::FTPClient1_Error);
    onEvent(control, &FTPClient::Connected, this, &frmFTP::FTPClient1_Connected);
    onEvent(control, &FTPClient::Downloaded, this, &frmFTP::FTPClient1_Downloaded);
    onEvent(control, &FTPClient::Uploaded, this, &frmFTP::FTPClient1_Uploaded);
    onEvent(control, &FTPClient::FileDeleted, this, &frmFTP::FTPClient1_FileDeleted);
    onEvent(control, &FTPClient::FileRenamed, this, &frmFTP::FTPClient1_FileRenamed);
    onEvent(control, &FTPClient::FileList, this, &frmFTP::FTPClient1_FileList);
    onEvent(control, &FTPClient::CurrentDirectory, this, &frmFTP::FTPClient1_CurrentDirectory);
    onEvent(control, &FTPClient::DirectoryCreated, this, &frmFTP::FTPClient1_DirectoryCreated);
    onEvent(control, &FTPClient::DirectoryRemoved, this, &frmFTP::FTPClient1_DirectoryRemoved);
    onEvent(control, &FTPClient::TransferProgress, transferMeter, &TransferMeter::report);
}

} // namespace vandrel
