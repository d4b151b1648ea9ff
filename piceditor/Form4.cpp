#include "piceditor/Form4.h"

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

Form4::Form4(frmPicEdit &frame) : ParameterDialog(frame, "Form4", tr("Adjust HSL"))
{
    int index = 0;
    for (const QString &label : {tr("HueValue"), tr("Saturation Value"), tr("Luminosity Value")})
        Text1.add(index++, addBox({}, label, QStringLiteral("0")));
}

void Form4::Command1_Click()
{
    process([this] {
        editor.c2->AdjustHSL(Val(Text1[0]->text()), Val(Text1[1]->text()), Val(Text1[2]->text()));
    });
    close();
}

} // namespace vandrel
