#include "files/frmFile.h"

#include <utility>

#include <QCloseEvent>
#include <QScopedValueRollback>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "runtime/Events.h"
#include "runtime/Integer.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

constexpr int deleteIcon = 4;

} // namespace

void frmFile::Form_Load()
{
    StartDir = m_files->CurDir();
    showFolder();
}

void frmFile::Form_Unload()
{
    m_files->ChDir(StartDir);
}

void frmFile::showFolder()
{
    setWindowTitle(tr("File Manager - ") + Dir1->Path());
}

// A drive that is not ready leaves everything as it is.
void frmFile::Drive1_Change()
{
    try {
        Dir1->setPath(Drive1->Drive());
    } catch (const RuntimeError &) {
        return;
    }
}

void frmFile::Dir1_Change()
{
    File1->setPath(Dir1->Path());
    m_files->ChDir(Dir1->Path());
    showFolder();
}

void frmFile::File1_MouseDown()
{
    DragFlag = true;
}

void frmFile::File1_MouseMove()
{
    if (DragFlag)
        File1->Drag(FileListBox::BeginDrag);
}

void frmFile::File1_Click()
{
    DragFlag = false;
}

void frmFile::cancelDrag()
{
    DragFlag = false;
    File1->Drag(FileListBox::CancelDrag);
}

void frmFile::File1_MouseUp()
{
    cancelDrag();
}

void frmFile::Dir1_MouseUp()
{
    cancelDrag();
}

void frmFile::Image1_MouseUp(int)
{
    cancelDrag();
}

void frmFile::Label1_MouseUp(int)
{
    cancelDrag();
}

void frmFile::Drive1_DragOver()
{
    cancelDrag();
}

void frmFile::Image1_DblClick(int Index)
{
    if (Index >= deleteIcon)
        return;
    QString folder = Dir1->Path();
    if (!folder.endsWith(u'\\'))
        folder += u'\\';
    Label1[Index]->setText(folder);
    Image1[Index]->setFaint(false);
}

// Whatever fails is told with the name of the file at which it did, and ends the rest.
void frmFile::Image1_DragDrop(int Index, const QObject *Source)
{
    try {
        if (Source == File1 && Index < deleteIcon)
            copySelected(Label1[Index]->text());
        else
            deleteSelected();
    } catch (const RuntimeError &) {
        tellError(QString());
    }
}

QStringList frmFile::selectedFiles() const
{
    QStringList names;
    const Integer count = File1->ListCount();
    for (int i = 1; i <= count; ++i) {
        if (File1->Selected(i - 1))
            names.append(File1->List(i - 1));
    }
    return names;
}

// The bare names are files of the current folder, which is the one shown as long as its drive is the current one.
void frmFile::copySelected(const QString &folder)
{
    if (folder.isEmpty())
        return;
    const QStringList names = selectedFiles();
    std::vector<FileOperations::Copy> copies;
    for (const QString &name : names)
        copies.push_back({name, folder + name});
    const QScopedValueRollback busy(m_isBusy, true);
    finish(m_files->FileCopy(copies, *this), names);
}

// Folder and name are joined as they are: only a drive's root ends in the "\" that parts them.
void frmFile::deleteSelected()
{
    const auto answer = MsgBox(tr("Are you sure you want to delete the selected file(s)?"), Buttons::YesNo,
                               BoxIcon::None, QString());
    if (answer != Answer::Yes)
        return;
    const QStringList names = selectedFiles();
    QStringList paths;
    for (const QString &name : names)
        paths.append(File1->Path() + name);
    const QScopedValueRollback busy(m_isBusy, true);
    finish(m_files->Kill(paths, *this), names);
}

void frmFile::finish(const FileBatchResult &result, const QStringList &names)
{
    if (result.failure)
        tellError(names.value(result.done));
    else
        File1->Refresh();
}

void frmFile::tellError(const QString &name)
{
    MsgBox(tr("Error processing file ") + name + tr("!!!"), Buttons::OkOnly, BoxIcon::Exclamation, QString());
}

void frmFile::closeEvent(QCloseEvent *event)
{
    guarded([this, event] {
        event->setAccepted(!m_isBusy);
        if (!m_isBusy)
            Form_Unload();
    });
}

} // namespace vandrel
