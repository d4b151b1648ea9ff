#pragma once

#include <QLineEdit>

#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Image buttonize": a raised border, by intensity and width.
class Form2 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form2(frmPicEdit &frame);

    /// The intensity, in percent.
    QLineEdit *Text1;
    /// The width, in pixels.
    QLineEdit *Text2;

protected:
    void Command1_Click() override;
};

} // namespace vandrel
