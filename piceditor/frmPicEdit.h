#pragma once

#include <functional>
#include <memory>

#include <QMainWindow>
#include <QString>

#include "piceditor/PicMenus.h"
#include "piceditor/PicToolBar.h"
#include "piceditor/PicView.h"
#include "piceditor/PictureEditorControls.h"
#include "runtime/Integer.h"
#include "runtime/Prompts.h"
#include "runtime/WindowSlot.h"

namespace vandrel {

class ClientArea;
class Label;
class StatusBar;
class WorkReport;

/// The picture editor: one picture, processed by commands and dialogs, the whole of it or the area that is drawn or
/// typed in. Its file image is what is saved and printed; its working image is what is processed and shown.
class frmPicEdit : public QMainWindow
{
    Q_OBJECT

public:
    explicit frmPicEdit(PictureEditorControls controls, QWidget *parent = nullptr);
    ~frmPicEdit() override;

    std::unique_ptr<CImage> c1;
    std::unique_ptr<CImage> c2;
    std::unique_ptr<CommonDialog> cd1;
    std::unique_ptr<CommonDialog> cd2;

    /// The inside of the window below its menu; the other widgets are its children.
    ClientArea *const client;
    const PicMenus menus;
    const PicToolBar toolbar;
    const PicView view;
    vandrel::StatusBar *StatusBar1;

    /// The working image differs from the file.
    bool bModified = false;
    /// The working image is a scaled copy of the file image.
    bool bZoomed = false;
    /// The zoom factor, 1/8 to 8 in powers of two.
    double dZoom = 1.0;
    /// The processing area, in pixels of the image.
    qint32 lAreaLeft = 0;
    qint32 lAreaTop = 0;
    qint32 lAreaRight = 0;
    qint32 lAreaBottom = 0;
    /// The file formats of the open picture and of "Save as" (CImage::Format).
    Integer nOpenFormat;
    Integer nSaveAsFormat;

    /// The last answers to the commands' prompts.
    QString sBlendValue;
    QString sBrightnessValue;
    QString sContrastValue;
    QString sSharpnessValue;
    QString sMosaicSize;
    float sngGammaValue = 0;
    Integer nRotateAngle;

    /// A drag of the rubber band is in progress, from there, in the box's units.
    bool bDragging = false;
    float vDragX = 0;
    float vDragY = 0;
    /// The image's pixel that was last found under the pointer.
    Integer nPointerX;
    Integer nPointerY;

    /// The dialogs, each made when it is first asked for.
    WindowSlot Form2;
    WindowSlot Form3;
    WindowSlot Form4;
    WindowSlot Form5;
    WindowSlot Form6;
    WindowSlot Form7;

    /// The picture's path; "" when there is none.
    const QString &openPicture() const;
    /// Paints an image into the view, from where the scroll bars stand. Only when a picture is open.
    void RedrawPicture(const CImage &img);
    void OpenPictureFile(const QString &path);
    /// Shows the size and depth of the working image in the status bar.
    void ShowPictureInfo();
    /// What every command and dialog does once it has its picture: remembers that it is modified, ends the zoom.
    /// Returns false, and does nothing, without a picture.
    bool BeginProcessing();
    /// And then: keeps the undo copy, runs the operation on the working image, shows it, sets the area again.
    void Perform(const std::function<void()> &operation);
    /// Hands the processing area to the working image. Raises Overflow (6) for one too large for a Long.
    void SendProcessingArea();

    // Files.
    void Command1_Click(int Index);
    void exit_Click();
    void cpy_Click();
    void hlp_Click();
    // The view.
    void Form_Load();
    void Form_Resize();
    void Form_GotFocus();
    void Form_DragDrop(QObject *Source, float X, float Y);
    void Pic1_DragDrop(QObject *Source, float X, float Y);
    void hs1_Change();
    void VS1_Change();
    void in_Click();
    void out_Click();
    void Command2_Click(int Index);
    // Processing.
    void autocon_Click();
    void deskew_Click();
    void blur_Click();
    void equ_Click();
    void neg_Click();
    void conc_Click();
    void conv_Click();
    void rmbr_Click();
    void btv_Click();
    void emboss_Click();
    void hor_Click();
    void ver_Click();
    void blend_Click();
    void brt_Click();
    void con_Click();
    void gam_Click();
    void sharp_Click();
    void mos_Click();
    void rot_Click();
    void mapping_Click();
    void warp_Click();
    void mat_Click();
    void replace_Click();
    // The processing area.
    void Pic1_MouseDown(int Button, int Shift, float X, float Y);
    void Pic1_MouseMove(int Button, int Shift, float X, float Y);
    void Pic1_MouseUp(int Button, int Shift, float X, float Y);

protected:
    bool event(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void createStatusBar();
    void connectFileMenus();
    void connectProcessMenus();
    void connectDialogs();
    void connectView();
    void updateCommands();

    void openFile();
    void saveFile();
    void saveFileAs();
    void printFile();
    void saveOpenPicture();
    bool savesChanges();
    void bringFileImageUpToDate();
    void Form_QueryUnload(bool &Cancel);

    void zoomTo(double factor);
    void resizeView(QSize size);
    void viewScrolled();
    void resetArea();
    void drawBand(float X, float Y);
    void showPointer(float X, float Y);
    void processAtOnce(bool (CImage::*operation)());
    void processAsked(QString &answer, const InputBoxRequest &question, bool (CImage::*operation)(double));
    void performUntracked(const std::function<void()> &operation);

    std::shared_ptr<DriveView> m_drives;
    Label *m_infoPanel = nullptr;
    Label *m_pointerPanel = nullptr;
    // Which way the rubber band was drawn last.
    bool m_dragsLeft = false;
    bool m_dragsUp = false;
    std::unique_ptr<WorkReport> m_report;
    WindowSlot m_help;
};

} // namespace vandrel
