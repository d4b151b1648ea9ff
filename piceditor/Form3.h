#pragma once

#include <QLineEdit>

#include "controls/ControlArray.h"
#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Adjust RGB": what is added to red, green and blue.
class Form3 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form3(frmPicEdit &frame);

    /// Red, green, blue: -255 to 255.
    ControlArray<QLineEdit> Text1{QStringLiteral("Text1")};

protected:
    void Command1_Click() override;
};

} // namespace vandrel
