#include "files/frmView.h"

#include <utility>

#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>

#include "controls/DirListBox.h"
#include "controls/DriveListBox.h"
#include "controls/FileListBox.h"
#include "controls/ImageBox.h"
#include "files/frmPic.h"
#include "runtime/Events.h"
#include "runtime/Numbers.h"

namespace vandrel {

namespace {

// The shortest interval there is: what is due is done at once.
constexpr int atOnce = 1;
constexpr int perSecond = 1000;
// The decoder's option for the quality of thumbnails, and the quality.
constexpr qint16 qualityOption = 4;
constexpr qint16 thumbnailQuality = 70;

} // namespace

void frmView::Form_Load()
{
    NothingLoaded = true;
    FileCount = 0;
    Dir1->setPath(QStringLiteral("c:\\"));
    showFolder();
}

void frmView::showFolder()
{
    setWindowTitle(tr("Picture viewer - ") + Dir1->Path());
}

void frmView::Drive1_Change()
{
    Dir1->setPath(Drive1->Drive());
}

void frmView::Dir1_Change()
{
    File1->setPath(Dir1->Path());
    m_controls.files->ChDir(Dir1->Path());
    showFolder();
}

// The list ends at the first line without text, which no file's name is.
void frmView::Command2_Click(int)
{
    [[maybe_unused]] const Integer end = File1->ListCount();
    File1->selectAll();
}

int frmView::typedInterval() const
{
    return CLng(Val(Text1->text()) * perSecond);
}

void frmView::Text1_Change()
{
    Timer1.setInterval(typedInterval());
}

void frmView::UpDown1_DownClick()
{
    Text1->setText(toText(Val(Text1->text()) - 1));
    if (Val(Text1->text()) < 1)
        Text1->setText(QStringLiteral("1"));
}

void frmView::UpDown1_UpClick()
{
    Text1->setText(toText(Val(Text1->text()) + 1));
}

const QString &frmView::file(int number) const
{
    if (number < 1 || static_cast<std::size_t>(number) > Files.size())
        throw RuntimeError(error::SubscriptOutOfRange);
    return Files[static_cast<std::size_t>(number) - 1];
}

void frmView::Command1_Click(int Index)
{
    collectSelection();
    if (Index == 0)
        startSlideShow();
    else
        buildThumbnails();
}

void frmView::ReleaseDecoders()
{
    c1.erase(c1.upper_bound(0), c1.end());
    NothingLoaded = true;
}

void frmView::collectSelection()
{
    if (!NothingLoaded)
        ReleaseDecoders();
    FileCount = File1->SelCount();
    Files.clear();
    Files.reserve(static_cast<std::size_t>(FileCount));
    for (int i = 0; i < File1->ListCount(); ++i) {
        if (File1->Selected(i))
            Files.push_back(inDosFolder(Dir1->Path(), File1->List(i)));
    }
}

void frmView::startSlideShow()
{
    Timer1.setInterval(atOnce);
    Timer1.setEnabled(true);
}

// A slide that is still being decoded when the next is due is shown first; its wait is as long as any other's.
void frmView::Timer1_Timer()
{
    if (m_coming)
        return;
    if (Timer1.Interval() == atOnce)
        Timer1.setInterval(typedInterval());
    c1[0]->ShowIn(Image1->contentsRect().size());
    c1[0]->LoadImageFile(file(SlideIndex + 1));
    m_coming = c1[0]->Picture();
    if (m_coming->state() != ComingPicture::State::Coming) {
        showSlide();
        return;
    }
    m_coming->setSeen(true);
    onEvent(m_coming.get(), &ComingPicture::changed, this, &frmView::showSlide);
}

void frmView::showSlide()
{
    const std::shared_ptr<ComingPicture> slide = std::exchange(m_coming, nullptr);
    if (!slide)
        return;
    slide->disconnect(this);
    Image1->setPicture(slide);
    if (slide->state() == ComingPicture::State::Unreadable)
        Timer1.setInterval(atOnce);
    ++SlideIndex;
    if (SlideIndex == FileCount) {
        Timer1.setEnabled(false);
        SlideIndex = 0;
    } else if (static_cast<std::size_t>(SlideIndex) < Files.size()) {
        c1[0]->Prepare(file(SlideIndex + 1));
    }
}

void frmView::buildThumbnails()
{
    auto &window = static_cast<frmPic &>(*m_controls.thumbnails->ensure());
    window.Empty(this);
    window.VScroll1->setVisible(true);
    for (int i = 1; i < FileCount; ++i) {
        window.LoadBox(i)->setVisible(true);
        c1[i] = m_controls.decoders->make();
    }
    NothingLoaded = FileCount <= 1;
    for (int n = 1; n <= FileCount; ++n) {
        ImageBox *box = window.Pic1[n - 1];
        PictureDecoder &decoder = *c1[n - 1];
        decoder.ShowIn(box->contentsRect().size());
        decoder.LoadImageFile(file(n));
        decoder.ResampleTo(box->Width(), box->Height(), 0);
        decoder.SetOption(qualityOption, thumbnailQuality);
        box->setPicture(decoder.Picture());
        box->setToolTip(file(n).sliced(file(n).lastIndexOf(u'\\') + 1).toHtmlEscaped());
    }
    window.LayoutThumbnails();
    m_controls.thumbnails->show();
}

} // namespace vandrel
