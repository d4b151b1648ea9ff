#include <memory>

#include "launcher/Form1.h"
#include "launcher/ToolSlots.h"
#include "launcher/frmPanel.h"
#include "platform/desktop/DesktopControlPanel.h"
#include "runtime/Events.h"
#include "runtime/SuiteApplication.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    SuiteApplication application(argc, argv);
    ToolSlots tools;
    WindowSlot launcher([&tools] { return new frmPanel(tools, std::make_unique<DesktopControlPanel>()); });
    WindowSlot about([&launcher] { return new Form1(launcher); });
    guarded([&about] { about.show(); });
    return SuiteApplication::exec();
}
