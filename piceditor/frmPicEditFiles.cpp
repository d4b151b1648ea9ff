// Opening, saving and printing.

#include <optional>

#include "controls/PictureBox.h"
#include "piceditor/WorkReport.h"
#include "piceditor/frmPicEdit.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

// By the last three characters of a file's name, exactly as they are written; other endings have no format.
std::optional<CImage::Format> formatOf(const QString &fileName)
{
    const std::pair<const char16_t *, CImage::Format> formats[] = {
        {u"bmp", CImage::Bmp}, {u"jpg", CImage::Jpeg}, {u"tif", CImage::Tiff},
        {u"dib", CImage::Dib}, {u"wpg", CImage::Wpg},  {u"pcx", CImage::Pcx},
    };
    for (const auto &[ending, format] : formats) {
        if (fileName.right(3) == QStringView(ending))
            return format;
    }
    return std::nullopt;
}

} // namespace

void frmPicEdit::Command1_Click(int Index)
{
    switch (Index) {
    case 1:
        openFile();
        break;
    case 2:
        saveFile();
        break;
    case 3:
        saveFileAs();
        break;
    case 4:
        printFile();
        break;
    default:
        break;
    }
}

void frmPicEdit::openFile()
{
    if (bModified && !savesChanges())
        return;
    const QString nothingChosen = QStringLiteral("*.bmp;*.pcx;*.dib;*.wpg;*.jpg;*.tif");
    cd1->FileName = nothingChosen;
    cd1->ShowOpen(this);
    if (cd1->FileName == nothingChosen)
        return;
    OpenPictureFile(cd1->FileName);
    nOpenFormat = formatOf(cd1->FileName).value_or(static_cast<CImage::Format>(nOpenFormat.value()));
}

void frmPicEdit::OpenPictureFile(const QString &path)
{
    m_report->clear();
    view.Pic1->setPicture({});
    c1->LoadImageFile(path);
    c2->setPicture(c1->Picture());
    view.Pic1->Tag = path;
    bModified = false;
    bZoomed = false;
    dZoom = 1.0;
    updateCommands();
    RedrawPicture(*c2);
    resetArea();
    ShowPictureInfo();
}

void frmPicEdit::saveFile()
{
    saveOpenPicture();
    bModified = false;
}

// The name and the format of the open picture stay: a later Save writes to the file that was opened.
void frmPicEdit::saveFileAs()
{
    cd2->Filter = QStringLiteral("Bitmap|*.bmp|JPEG|*.jpg|TIFF|*.tif|PCX|*.pcx|WPG|*.wpg|DIB|*.dib");
    // A name left from last time would make a cancelled dialog look like an accepted one.
    cd2->FileName.clear();
    cd2->ShowSave(this);
    if (cd2->FileName.isEmpty())
        return;
    nSaveAsFormat = formatOf(cd2->FileName).value_or(static_cast<CImage::Format>(nSaveAsFormat.value()));
    m_report->clear();
    bringFileImageUpToDate();
    c1->SaveImageFile(cd2->FileName, nSaveAsFormat);
    bModified = false;
}

void frmPicEdit::printFile()
{
    if (openPicture().isEmpty())
        return;
    if (MsgBox(tr("Are you sure you want to print this picture?"), Buttons::YesNo) != Answer::Yes)
        return;
    m_report->clear();
    c1->PrintImage(this, 0, 0, c1->Width(), c1->Height());
}

// The scaled copy of a zoomed picture is for the eye; the file image is what it was made of.
void frmPicEdit::bringFileImageUpToDate()
{
    if (!bZoomed)
        c1->setPicture(c2->Picture());
}

void frmPicEdit::saveOpenPicture()
{
    m_report->clear();
    bringFileImageUpToDate();
    c1->SaveImageFile(openPicture(), nOpenFormat);
}

// Asks what is to become of the changes, and saves them if that is the answer; false when the user cancelled.
bool frmPicEdit::savesChanges()
{
    const Answer answer = MsgBox(tr("Do you want to save the changes made to picture %1?").arg(openPicture()),
                                 Buttons::YesNoCancel);
    if (answer == Answer::Yes)
        saveOpenPicture();
    return answer != Answer::Cancel;
}

void frmPicEdit::cpy_Click()
{
    m_report->clear();
    bringFileImageUpToDate();
    c1->CopyToClipboard();
}

} // namespace vandrel
