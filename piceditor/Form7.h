#pragma once

#include <QLineEdit>

#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Set processing area": the area by its corners, in pixels of the image. It needs no picture.
class Form7 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form7(frmPicEdit &frame);

    /// Left, top, right, bottom.
    QLineEdit *Text1;
    QLineEdit *Text2;
    QLineEdit *Text3;
    QLineEdit *Text4;

protected:
    void Command1_Click() override;
};

} // namespace vandrel
