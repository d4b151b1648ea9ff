#pragma once

#include <QLineEdit>

#include "controls/ControlArray.h"
#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Adjust HSL": how hue, saturation and luminosity change.
class Form4 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form4(frmPicEdit &frame);

    /// Hue in degrees; saturation and luminosity in percent.
    ControlArray<QLineEdit> Text1{QStringLiteral("Text1")};

protected:
    void Command1_Click() override;
};

} // namespace vandrel
