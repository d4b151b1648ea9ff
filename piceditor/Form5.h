#pragma once

#include "controls/ComboBox.h"
#include "controls/ControlArray.h"
#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Resample colors": changes the number of colours.
class Form5 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form5(frmPicEdit &frame);

    /// Bits per pixel, the kind of palette, the kind of dither.
    ControlArray<ComboBox> Combo1{QStringLiteral("Combo1")};
    /// The code of the chosen kind of palette; the last one, 0 at first, when none is chosen.
    qint32 lColorDepthType = 0;

protected:
    void Command1_Click() override;
};

} // namespace vandrel
