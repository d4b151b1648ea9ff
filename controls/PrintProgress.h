#pragma once

#include <QElapsedTimer>
#include <QPointer>

#include "runtime/EventGate.h"

class QProgressDialog;
class QWidget;

namespace vandrel {

/// Keeps the windows alive during a long print, and after half a second shows how far it has come, with a button that
/// cancels it. No other window of the program takes input meanwhile, and the events of controls wait.
class PrintProgress
{
public:
    /// `owner` is the widget whose text is printed.
    explicit PrintProgress(QWidget &owner);
    ~PrintProgress();
    PrintProgress(const PrintProgress &) = delete;
    PrintProgress &operator=(const PrintProgress &) = delete;

    /// To be called often, with how much is done, 0 to 1. Returns false when the user has cancelled.
    bool goOn(double done);

private:
    void show();

    EventGate::Hold m_hold;
    QPointer<QWidget> m_owner;
    QPointer<QProgressDialog> m_dialog;
    QElapsedTimer m_sinceStart;
    QElapsedTimer m_sinceLast;
    bool m_isCancelled = false;
};

} // namespace vandrel
