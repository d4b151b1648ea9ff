#include "platform/desktop/QtColorDialog.h"

#include <QColorDialog>
#include <QPointer>

#include "controls/RgbLong.h"
#include "runtime/EventGate.h"

namespace vandrel {

QString QtColorDialog::ShowColor(QWidget *owner)
{
    const EventGate::Hold hold;
    qint32 chosen = Color;
    // The owner may go, and the dialog with it, while it is open.
    const QPointer<QColorDialog> dialog(new QColorDialog(colorOf(Color), owner));
    const bool accepted = dialog->exec() == QDialog::Accepted;
    if (accepted && dialog)
        chosen = rgbLongOf(dialog->selectedColor());
    delete dialog.data();
    return QString::number(chosen);
}

} // namespace vandrel
