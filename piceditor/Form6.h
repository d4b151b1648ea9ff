#pragma once

#include <QLineEdit>

#include "piceditor/ParameterDialog.h"

namespace vandrel {

/// "Resize": scales the picture by a ratio. Unlike a zoom it changes the file image, which Save writes.
class Form6 final : public ParameterDialog
{
    Q_OBJECT

public:
    explicit Form6(frmPicEdit &frame);

    /// The ratio, more than 0.
    QLineEdit *Text1;

protected:
    void Command1_Click() override;
};

} // namespace vandrel
