// An event loop that has nothing to do, until its input ends:
//
//     idle_loop
//
// Prints the longest time that it was away in milliseconds: what the machine keeps from any program. The benches run it
// beside what they measure.

#include <cstdio>

#include <QCoreApplication>
#include <QSocketNotifier>

#include "LoopWatch.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    constexpr int standardInput = 0;
    const QSocketNotifier inputEnds(standardInput, QSocketNotifier::Read);
    QObject::connect(&inputEnds, &QSocketNotifier::activated, &QCoreApplication::quit);
    const bench::LoopWatch watch;
    const int result = QCoreApplication::exec();
    std::printf("%.1f\n", watch.worstGap());
    return result;
}
