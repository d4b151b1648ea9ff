#include "piceditor/Form6.h"

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

Form6::Form6(frmPicEdit &frame)
    : ParameterDialog(frame, "Form6", tr("Resize")),
      Text1(addBox(QStringLiteral("Text1"), tr("Dimensions ratio:"), QStringLiteral("1")))
{ }

void Form6::Command1_Click()
{
    process([this] {
        const double newWidth = Val(Text1->text()) * editor.c1->Width();
        const double newHeight = Val(Text1->text()) * editor.c1->Height();
        editor.c2->Resize(newWidth, newHeight, 1);
        editor.c1->setPicture(editor.c2->Picture());
    });
    if (!editor.openPicture().isEmpty())
        editor.ShowPictureInfo();
    close();
}

} // namespace vandrel
