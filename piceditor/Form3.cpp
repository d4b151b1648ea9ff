#include "piceditor/Form3.h"

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

Form3::Form3(frmPicEdit &frame) : ParameterDialog(frame, "Form3", tr("Adjust RGB"))
{
    int index = 0;
    for (const QString &label : {tr("Red Value"), tr("Green Value"), tr("Blue Value")})
        Text1.add(index++, addBox({}, label, QStringLiteral("0")));
}

void Form3::Command1_Click()
{
    process([this] {
        editor.c2->AdjustRGB(Val(Text1[0]->text()), Val(Text1[1]->text()), Val(Text1[2]->text()));
    });
    close();
}

} // namespace vandrel
