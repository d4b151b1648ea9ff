#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QScreen>
#include <QShortcut>
#include <QStyle>
#include <QVBoxLayout>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "files/frmFile.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr int folderIcons = 4;
// The size of the window where the screen has room for it, in characters and lines of its font.
constexpr int windowColumns = 90;
constexpr int windowLines = 34;
constexpr int frameMargin = 40;

} // namespace

frmFile::frmFile(const std::shared_ptr<LocalFolders> &folders, std::unique_ptr<FileOperations> files)
    : QWidget(nullptr, Qt::Window), m_files(std::move(files))
{
    setObjectName(QStringLiteral("frmFile"));
    setFont(QFont(QStringLiteral("Arial")));
    arrange(folders);
    setTabOrders();
    connectLists();
    connectIcons();
    Form_Load();
}

frmFile::~frmFile() = default;

void frmFile::arrange(const std::shared_ptr<LocalFolders> &folders)
{
    Drive1 = new DriveListBox(folders, this);
    Drive1->setObjectName(QStringLiteral("Drive1"));
    Dir1 = new DirListBox(folders, this);
    Dir1->setObjectName(QStringLiteral("Dir1"));
    File1 = new FileListBox(folders, this);
    File1->setObjectName(QStringLiteral("File1"));
    File1->setMultiSelect(true);
    Label2 = new QLabel(
        tr("Double-clicking any of the folder icons below, makes it a shortcut to current folder!"), this);
    Label2->setObjectName(QStringLiteral("Label2"));
    Label2->setWordWrap(true);
    Label2->setAlignment(Qt::AlignCenter);

    auto *lists = new QHBoxLayout;
    lists->addWidget(Dir1, 1);
    lists->addWidget(File1, 1);
    auto *column = new QVBoxLayout(this);
    column->addWidget(Drive1);
    column->addLayout(lists, 1);
    column->addWidget(Label2);
    column->addLayout(arrangeIcons());

    const QSize wanted(fontMetrics().averageCharWidth() * windowColumns,
                       fontMetrics().lineSpacing() * windowLines);
    resize(wanted.boundedTo(screen()->availableSize() - QSize(frameMargin, frameMargin)));
}

QLayout *frmFile::arrangeIcons()
{
    auto *grid = new QGridLayout;
    const QIcon folder = style()->standardIcon(QStyle::SP_DirIcon);
    const QIcon bin = style()->standardIcon(QStyle::SP_TrashIcon);
    for (int index = 0; index <= folderIcons; ++index) {
        const bool isFolder = index < folderIcons;
        DropIcon *icon = Image1.add(index,
                                    isFolder ? new DropIcon(folder, Qt::CopyAction, this)
                                             : new DropIcon(bin, Qt::MoveAction, this));
        icon->setAccessibleName(isFolder ? tr("Folder shortcut %1").arg(index + 1) : tr("Delete"));
        icon->setFaint(isFolder);
        ElidedLabel *label = Label1.add(index, new ElidedLabel(Qt::ElideMiddle, this));
        label->setAlignment(Qt::AlignHCenter);
        grid->addWidget(icon, 0, index, Qt::AlignCenter);
        grid->addWidget(label, 1, index);
        grid->setColumnStretch(index, 1);
    }
    Label1[folderIcons]->setText(tr("Delete!!!"));
    return grid;
}

void frmFile::setTabOrders()
{
    setTabOrder(Drive1, Dir1);
    setTabOrder(Dir1, File1);
    QWidget *before = File1;
    for (const auto &[index, icon] : Image1) {
        setTabOrder(before, icon);
        before = icon;
    }
    Dir1->setFocus();
}

void frmFile::connectLists()
{
    onEvent(Drive1, &DriveListBox::Change, this, &frmFile::Drive1_Change);
    onEvent(Drive1, &DriveListBox::DragOver, this, &frmFile::Drive1_DragOver);
    onEvent(Dir1, &DirListBox::Change, this, &frmFile::Dir1_Change);
    onEvent(Dir1, &ListBox::MouseUp, this, &frmFile::Dir1_MouseUp);
    onEvent(File1, &ListBox::MouseDown, this, &frmFile::File1_MouseDown);
    onEvent(File1, &ListBox::MouseMove, this, &frmFile::File1_MouseMove);
    onEvent(File1, &ListBox::MouseUp, this, &frmFile::File1_MouseUp);
    onEvent(File1, &ListBox::Click, this, &frmFile::File1_Click);
    auto *erase = new QShortcut(QKeySequence(QKeySequence::Delete), File1, nullptr, nullptr,
                                Qt::WidgetWithChildrenShortcut);
    onEvent(erase, &QShortcut::activated, this, [this] { Image1_DragDrop(folderIcons, File1); });
}

void frmFile::connectIcons()
{
    Image1.onEvent(&DropIcon::MouseUp, this, &frmFile::Image1_MouseUp);
    Image1.onEvent(&DropIcon::DblClick, this, &frmFile::Image1_DblClick);
    Label1.onEvent(&Label::MouseUp, this, &frmFile::Label1_MouseUp);
    for (const auto &[index, icon] : Image1) {
        onEvent(icon, &DropIcon::DragDrop, this,
                [this, i = index](QObject *source) { Image1_DragDrop(i, source); });
        onEvent(icon, &QToolButton::clicked, this, [this, i = index] { Image1_DragDrop(i, File1); });
    }
}

} // namespace vandrel
