#include "runtime/SuiteApplication.h"

#include "runtime/Events.h"

namespace vandrel {

SuiteApplication::SuiteApplication(int &argc, char **argv) : QApplication(argc, argv) { }

bool SuiteApplication::notify(QObject *receiver, QEvent *event)
{
    bool handled = false;
    guarded([&] { handled = QApplication::notify(receiver, event); });
    return handled;
}

} // namespace vandrel
