// The processing commands.

#include <cmath>
#include <limits>

#include "piceditor/WorkReport.h"
#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"
#include "runtime/Prompts.h"

namespace vandrel {

namespace {

// Raises Overflow (6) for what a Single cannot hold.
float toSingle(double value)
{
    if (std::abs(value) > static_cast<double>(std::numeric_limits<float>::max()))
        throw RuntimeError(error::Overflow);
    return static_cast<float>(value);
}

} // namespace

bool frmPicEdit::BeginProcessing()
{
    if (openPicture().isEmpty())
        return false;
    bModified = true;
    if (bZoomed) {
        c2->setPicture(c1->Picture());
        bZoomed = false;
        dZoom = 1.0;
    }
    return true;
}

// The area is sent after the operation, which works on the one that the image holds by then: the whole picture, when a
// zoom has just been ended.
void frmPicEdit::Perform(const std::function<void()> &operation)
{
    m_report->clear();
    c2->KeepUndo(true);
    operation();
    RedrawPicture(*c2);
    SendProcessingArea();
}

void frmPicEdit::SendProcessingArea()
{
    const double width = static_cast<double>(lAreaRight) - lAreaLeft;
    const double height = static_cast<double>(lAreaBottom) - lAreaTop;
    c2->SetProcessingArea(lAreaLeft, lAreaTop, CLng(width), CLng(height));
}

void frmPicEdit::processAtOnce(bool (CImage::*operation)())
{
    if (BeginProcessing())
        Perform([&] { (*c2.*operation)(); });
}

void frmPicEdit::autocon_Click()
{
    processAtOnce(&CImage::AutoContrast);
}

void frmPicEdit::deskew_Click()
{
    processAtOnce(&CImage::Deskew);
}

void frmPicEdit::blur_Click()
{
    processAtOnce(&CImage::Blur);
}

void frmPicEdit::equ_Click()
{
    processAtOnce(&CImage::Equalize);
}

void frmPicEdit::neg_Click()
{
    processAtOnce(&CImage::Negative);
}

void frmPicEdit::conc_Click()
{
    processAtOnce(&CImage::ConcaveSpectrum);
}

void frmPicEdit::conv_Click()
{
    processAtOnce(&CImage::ConvexSpectrum);
}

void frmPicEdit::rmbr_Click()
{
    processAtOnce(&CImage::Rembrand);
}

void frmPicEdit::btv_Click()
{
    processAtOnce(&CImage::BrokenTV);
}

void frmPicEdit::emboss_Click()
{
    processAtOnce(&CImage::Emboss);
}

void frmPicEdit::hor_Click()
{
    processAtOnce(&CImage::FlipHorizontal);
}

void frmPicEdit::ver_Click()
{
    processAtOnce(&CImage::FlipVertical);
}

// What is typed is kept as text; a cancelled box is an empty text, which counts as 0.
void frmPicEdit::processAsked(QString &answer,
                              const InputBoxRequest &question,
                              bool (CImage::*operation)(double))
{
    if (!BeginProcessing())
        return;
    answer = prompts().inputBox(question);
    Perform([&] { (*c2.*operation)(Val(answer)); });
}

void frmPicEdit::blend_Click()
{
    processAsked(sBlendValue, {tr("Enter blend value:"), tr("Blend"), QStringLiteral("0")}, &CImage::Blend);
}

void frmPicEdit::brt_Click()
{
    processAsked(sBrightnessValue, {tr("Enter brightness value:"), tr("Brightness"), QStringLiteral("0")},
                 &CImage::Brightness);
}

void frmPicEdit::con_Click()
{
    processAsked(sContrastValue, {tr("Enter contrast value:"), tr("Contrast"), QStringLiteral("0")},
                 &CImage::Contrast);
}

void frmPicEdit::gam_Click()
{
    if (!BeginProcessing())
        return;
    sngGammaValue = toSingle(Val(InputBox(tr("Enter gamma value:"), tr("Gamma"), QStringLiteral("0"))));
    Perform([this] { c2->Gamma(static_cast<double>(sngGammaValue)); });
}

void frmPicEdit::sharp_Click()
{
    processAsked(sSharpnessValue, {tr("Enter sharpness value:"), tr("Sharpness"), QStringLiteral("0")},
                 &CImage::Sharpen);
}

void frmPicEdit::mos_Click()
{
    processAsked(sMosaicSize, {tr("Enter size of mosaic pieces:"), tr("Mosaic"), QStringLiteral("1")},
                 &CImage::Mosaic);
}

void frmPicEdit::rot_Click()
{
    if (!BeginProcessing())
        return;
    nRotateAngle
        = CInt(InputBox(tr("Enter the angle of rotation:"), tr("Rotate Image"), QStringLiteral("45")));
    Perform([this] { c2->Rotate(nRotateAngle); });
}

void frmPicEdit::mapping_Click()
{
    if (BeginProcessing())
        Perform([this] { c2->BumpMap(12, false); });
}

// These three commands mark nothing as modified, leave a zoom as it is and do not send the area.
void frmPicEdit::performUntracked(const std::function<void()> &operation)
{
    if (openPicture().isEmpty())
        return;
    m_report->clear();
    c2->KeepUndo(true);
    operation();
    RedrawPicture(*c2);
}

void frmPicEdit::warp_Click()
{
    performUntracked([this] { c2->Warp({20, 20, 400, 20, 20, 400, 400, 400}); });
}

void frmPicEdit::mat_Click()
{
    performUntracked([this] { c2->Matrix({-1, 2, -1, -1, 9, -1, -1, 2, -1}, 1, 2); });
}

void frmPicEdit::replace_Click()
{
    performUntracked([this] {
        const auto &Command2 = toolbar.Command2;
        c2->ReplaceColors(Command2[0]->BackColor(), Command2[1]->BackColor(), Command2[7]->BackColor());
    });
}

} // namespace vandrel
