#pragma once

#include "controls/blsColorDialog.h"

namespace vandrel {

/// The colour chooser of the running desktop, or the toolkit's own where the desktop has none.
class QtColorDialog : public blsColorDialog
{
    Q_OBJECT

public:
    using blsColorDialog::blsColorDialog;

    QString ShowColor(QWidget *owner) override;
};

} // namespace vandrel
