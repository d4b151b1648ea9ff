#include "platform/sysinfo/DefaultPrinter.h"

#include <chrono>
#include <future>
#include <memory>
#include <thread>

#include <QPrinterInfo>

namespace vandrel {

QString defaultPrinterName()
{
    using namespace std::chrono_literals;
    // The thread holds all that it needs itself, so that it may end long after it was given up.
    auto answer = std::make_shared<std::promise<QString>>();
    std::future<QString> name = answer->get_future();
    std::thread([answer] { answer->set_value(QPrinterInfo::defaultPrinterName()); }).detach();
    return name.wait_for(1s) == std::future_status::ready ? name.get() : QString();
}

} // namespace vandrel
