#include "piceditor/Form2.h"

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

Form2::Form2(frmPicEdit &frame)
    : ParameterDialog(frame, "Form2", tr("Image buttonize")),
      Text1(addBox(QStringLiteral("Text1"), tr("Enter button intensity:"), QStringLiteral("0"))),
      Text2(addBox(QStringLiteral("Text2"), tr("Enter button width:"), QStringLiteral("0")))
{ }

void Form2::Command1_Click()
{
    process([this] { editor.c2->Buttonize(Val(Text1->text()), Val(Text2->text())); });
    close();
}

} // namespace vandrel
