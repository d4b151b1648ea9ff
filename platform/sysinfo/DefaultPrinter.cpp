#include "platform/sysinfo/DefaultPrinter.h"

#include <QPrinterInfo>

#include "runtime/AnswerWithin.h"

namespace vandrel {

QString defaultPrinterName()
{
    using namespace std::chrono_literals;
    return answerWithin(1s, [] { return QPrinterInfo::defaultPrinterName(); }).value_or(QString());
}

} // namespace vandrel
