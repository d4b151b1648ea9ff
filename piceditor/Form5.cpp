#include "piceditor/Form5.h"

#include <algorithm>
#include <array>

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

namespace {

// The control's codes of the kinds of palettes, in the order of the list, which is not theirs.
constexpr std::array colorDepthCodes{1, 2, 6, 0, 5};
// What changes least is chosen at first: a palette made for the picture, no dither.
constexpr int optimized = 3;
constexpr int noDither = 0;

} // namespace

Form5::Form5(frmPicEdit &frame) : ParameterDialog(frame, "Form5", tr("Resample colors"))
{
    const QStringList depths{QStringLiteral("1"), QStringLiteral("4"), QStringLiteral("8"),
                             QStringLiteral("16"), QStringLiteral("24")};
    Combo1.add(0, addList({}, tr("Bits per pixel"), depths));
    Combo1.add(
        1,
        addList({}, tr("Color depth type"),
                {QStringLiteral("Fixed"), QStringLiteral("Gray_Scale"), QStringLiteral("Gray_Scale_Dither"),
                 QStringLiteral("Optimized"), QStringLiteral("Optimized_Dither")}));
    Combo1.add(2,
               addList({}, tr("Dither type"),
                       {QStringLiteral("None"), QStringLiteral("Floyd_Steinberg"), QStringLiteral("Ordered"),
                        QStringLiteral("RandomDiffuse")}));
    // The picture's own depth; the deepest where it has none of these.
    const qsizetype depth = depths.indexOf(toText(frame.c2->BitsPerPixel()));
    Combo1[0]->setListIndex(static_cast<int>(depth < 0 ? depths.size() - 1 : depth));
    Combo1[1]->setListIndex(optimized);
    Combo1[2]->setListIndex(noDither);
}

void Form5::Command1_Click()
{
    process([this] {
        if (const int position = Combo1[1]->ListIndex(); position >= 0)
            lColorDepthType = colorDepthCodes.at(static_cast<std::size_t>(position));
        editor.c2->ResampleColors(Val(Combo1[0]->Text()), lColorDepthType,
                                  static_cast<qint16>(Combo1[2]->ListIndex()));
    });
    if (!editor.openPicture().isEmpty())
        editor.ShowPictureInfo();
    close();
}

} // namespace vandrel
