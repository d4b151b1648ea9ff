#pragma once

#include <memory>

#include <QString>
#include <QWidget>

#include "controls/ControlArray.h"
#include "controls/DropIcon.h"
#include "controls/ElidedLabel.h"
#include "controls/FileOperations.h"
#include "controls/LocalFolders.h"

class QLabel;

namespace vandrel {

class DirListBox;
class DriveListBox;
class FileListBox;

/// The file manager: a drive, its folders, and the files of one. Files are copied by dragging them onto a folder icon,
/// which a double click makes a shortcut to the folder shown, and deleted by dragging them onto the last icon.
///
/// From the keyboard, Space on an icon does to the selected files what a drop there does, Enter on a folder icon makes
/// the shortcut, and Delete in the list of files is a drop on the last icon.
class frmFile : public QWidget
{
    Q_OBJECT

public:
    /// `folders` is what the lists show, `files` copies and deletes; never null.
    frmFile(const std::shared_ptr<LocalFolders> &folders, std::unique_ptr<FileOperations> files);
    ~frmFile() override;

    DriveListBox *Drive1 = nullptr;
    DirListBox *Dir1 = nullptr;
    FileListBox *File1 = nullptr;
    QLabel *Label2 = nullptr;
    /// Four folders, and behind them the icon that deletes.
    ControlArray<DropIcon> Image1{QStringLiteral("Image1")};
    /// Under each folder the path of its shortcut, which ends in "\", empty while it has none.
    ControlArray<ElidedLabel> Label1{QStringLiteral("Label1")};

    /// The current folder when the window was loaded.
    QString StartDir;
    /// True between a press on the list of files and the next click, release or cancel.
    bool DragFlag = false;

    // The handlers.
    void Form_Load();
    void Form_Unload();
    void Drive1_Change();
    void Drive1_DragOver();
    /// Raises what reading a folder raises.
    void Dir1_Change();
    void Dir1_MouseUp();
    void File1_MouseDown();
    void File1_MouseMove();
    void File1_MouseUp();
    void File1_Click();
    void Image1_MouseUp(int Index);
    void Label1_MouseUp(int Index);
    void Image1_DblClick(int Index);
    /// `Source` is the control that was dragged.
    void Image1_DragDrop(int Index, const QObject *Source);

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void arrange(const std::shared_ptr<LocalFolders> &folders);
    QLayout *arrangeIcons();
    void setTabOrders();
    void connectLists();
    void connectIcons();
    QStringList selectedFiles() const;
    void copySelected(const QString &folder);
    void deleteSelected();
    void finish(const FileBatchResult &result, const QStringList &names);
    static void tellError(const QString &name);
    void showFolder();
    void cancelDrag();

    std::unique_ptr<FileOperations> m_files;
    /// A batch runs, and the window must be there when it ends.
    bool m_isBusy = false;
};

} // namespace vandrel
