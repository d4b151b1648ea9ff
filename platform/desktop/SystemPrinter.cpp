#include "platform/desktop/SystemPrinter.h"

#include <QPointer>
#include <QPrintDialog>
#include <QPrinter>

#include "runtime/EventGate.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

SystemPrinter::SystemPrinter(QObject *parent) : Printer(parent) { }

SystemPrinter::~SystemPrinter() = default;

QPrinter *SystemPrinter::hDC(QWidget *owner, const QString &documentName)
{
    const EventGate::Hold hold;
    if (!m_device)
        m_device = std::make_unique<QPrinter>(QPrinter::HighResolution);
    // Print jobs, and the files that the dialog proposes, are named as the document's file is, without its folder.
    m_device->setDocName(documentName.section(u'\\', -1));
    // The owner may go, and the dialog with it, while it is open.
    const QPointer<QPrintDialog> dialog(new QPrintDialog(m_device.get(), owner));
    // The whole text, or the selection, is what is printed; pages are not known before.
    dialog->setOptions(QAbstractPrintDialog::PrintToFile | QAbstractPrintDialog::PrintShowPageSize
                       | QAbstractPrintDialog::PrintCollateCopies);
    const bool accepted = dialog->exec() == QDialog::Accepted && dialog;
    delete dialog.data();
    if (!accepted)
        return nullptr;
    if (!m_device->isValid())
        throw RuntimeError(error::PrinterError,
                           tr("\"%1\" cannot be printed on \"%2\". Check that the printer is switched on and "
                              "connected, or print to a PDF file.")
                               .arg(documentName, m_device->printerName()));
    return m_device.get();
}

} // namespace vandrel
