#pragma once

#include <memory>

#include "controls/Printer.h"

namespace vandrel {

/// The printers of the system's print service, the default one chosen first, and PDF files. Without a print
/// service there are PDF files only. What the user sets up is kept for the next document.
class SystemPrinter : public Printer
{
    Q_OBJECT

public:
    explicit SystemPrinter(QObject *parent = nullptr);
    ~SystemPrinter() override;

    QPrinter *hDC(QWidget *owner, const QString &documentName) override;

private:
    std::unique_ptr<QPrinter> m_device;
};

} // namespace vandrel
