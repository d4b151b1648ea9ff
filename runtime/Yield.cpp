#include "runtime/Yield.h"

#include <QCoreApplication>

namespace vandrel {

void yieldToEvents()
{
    QCoreApplication::processEvents();
}

} // namespace vandrel
