#pragma once

#include <functional>

#include <QObject>

class QPrinter;
class QWidget;

namespace vandrel {

/// The system's printers. User-interface thread only.
class Printer : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    /// Lets the user choose a printer (or a PDF file) in the system's print dialog over `owner` and returns
    /// the device to print on; null when the user cancelled. Raises Printer error (482) when the system's
    /// print service cannot be used. The device stays the printer's own and is valid until the next call.
    virtual QPrinter *hDC(QWidget *owner, const QString &documentName) = 0;
};

} // namespace vandrel
