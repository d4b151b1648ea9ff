#include "piceditor/Form7.h"

#include "piceditor/frmPicEdit.h"
#include "runtime/Numbers.h"

namespace vandrel {

Form7::Form7(frmPicEdit &frame)
    : ParameterDialog(frame, "Form7", tr("Set processing area")),
      Text1(addBox(QStringLiteral("Text1"), tr("Left:"), toText(frame.lAreaLeft))),
      Text2(addBox(QStringLiteral("Text2"), tr("Top:"), toText(frame.lAreaTop))),
      Text3(addBox(QStringLiteral("Text3"), tr("Right:"), toText(frame.lAreaRight))),
      Text4(addBox(QStringLiteral("Text4"), tr("Bottom:"), toText(frame.lAreaBottom)))
{ }

void Form7::Command1_Click()
{
    editor.lAreaLeft = CLng(Text1->text());
    editor.lAreaTop = CLng(Text2->text());
    editor.lAreaRight = CLng(Text3->text());
    editor.lAreaBottom = CLng(Text4->text());
    const double left = Val(Text1->text());
    const double top = Val(Text2->text());
    editor.c2->SetProcessingArea(CLng(left), CLng(top), CLng(Val(Text3->text()) - left),
                                 CLng(Val(Text4->text()) - top));
    close();
}

} // namespace vandrel
