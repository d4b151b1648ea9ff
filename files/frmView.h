#pragma once

#include <map>
#include <memory>
#include <vector>

#include <QWidget>

#include "controls/ControlArray.h"
#include "controls/FileOperations.h"
#include "controls/LocalFolders.h"
#include "controls/PictureDecoder.h"
#include "controls/Timer.h"
#include "runtime/Integer.h"
#include "runtime/WindowSlot.h"

class QLineEdit;
class QPushButton;

namespace vandrel {

class DirListBox;
class DriveListBox;
class FileListBox;
class frmPic;
class ImageBox;
class UpDown;

/// What the picture viewer works with; nothing is null.
struct ViewerControls {
    std::shared_ptr<LocalFolders> folders;
    std::unique_ptr<FileOperations> files;
    std::shared_ptr<PictureDecoders> decoders;
    /// The one thumbnails window, which outlives the viewer.
    WindowSlot *thumbnails = nullptr;
};

/// The picture viewer: picture files are chosen in its lists and shown one after the other in its own picture area, or
/// all at once in the thumbnails window.
class frmView : public QWidget
{
    Q_OBJECT

public:
    explicit frmView(ViewerControls controls);
    ~frmView() override;

    DriveListBox *Drive1 = nullptr;
    DirListBox *Dir1 = nullptr;
    FileListBox *File1 = nullptr;
    QLineEdit *Text1 = nullptr;
    UpDown *UpDown1 = nullptr;
    ControlArray<QPushButton> Command1{QStringLiteral("Command1")};
    ControlArray<QPushButton> Command2{QStringLiteral("Command2")};
    ImageBox *Image1 = nullptr;
    Timer Timer1;
    /// The decoders: 0 serves the slide show, and with the others the thumbnails.
    std::map<int, std::unique_ptr<PictureDecoder>> c1;

    /// The paths of the files that were selected when a button was last pressed; the first is Files[0].
    std::vector<QString> Files;
    Integer FileCount;
    /// How many slides of the current run were shown.
    Integer SlideIndex;
    /// Whether there is no decoder but the first.
    bool NothingLoaded = true;

    /// Gives back all decoders but the first.
    void ReleaseDecoders();

    // The handlers.
    void Form_Load();
    /// Raises what reading a folder raises, as Dir1_Change does.
    void Drive1_Change();
    void Dir1_Change();
    void Command2_Click(int Index);
    /// Raises Overflow (6) and Invalid property value (380) for an interval that the timer cannot have, as the arrows
    /// and the timer do.
    void Text1_Change();
    void UpDown1_DownClick();
    void UpDown1_UpClick();
    void Command1_Click(int Index);
    /// Raises Subscript out of range (9) when there is no such file.
    void Timer1_Timer();

private:
    void arrange();
    QLayout *arrangeLists();
    QLayout *arrangeButtons();
    void setTabOrders();
    void connectAll();
    void showFolder();
    int typedInterval() const;
    const QString &file(int number) const;
    void collectSelection();
    void startSlideShow();
    void buildThumbnails();
    void showSlide();

    ViewerControls m_controls;
    /// The slide whose turn it is, while it is still being decoded.
    std::shared_ptr<ComingPicture> m_coming;
};

} // namespace vandrel
