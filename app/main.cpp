#include "app/Suite.h"
#include "app/SuiteIcon.h"
#include "platform/fonts/FontsAhead.h"
#include "runtime/Events.h"
#include "runtime/SuiteApplication.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    const FontsAhead fonts;
    SuiteApplication application(argc, argv);
    SuiteApplication::setWindowIcon(suiteIcon());
    Suite suite;
    guarded([&suite] { suite.about().show(); });
    return SuiteApplication::exec();
}
