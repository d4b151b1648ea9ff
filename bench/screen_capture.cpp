// Captures the screen that DISPLAY names to a file, as the tool's "Capture now" does:
//
//     screen_capture FILE
//
// Prints one line: milliseconds from the order until the whole file is there, the longest time that the event loop was
// away meanwhile, and the most memory that was resident in kilobytes. bench/screen-capture runs it beside its peers.

#include <algorithm>
#include <cstdio>

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QTimer>

#include "Memory.h"
#include "platform/capture/DesktopScreenCapture.h"
#include "platform/capture/XcbScreenSource.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 2)
        return 2;
    const QString file = arguments[1];
    QFile::remove(file);
    DesktopScreenCapture capture(std::make_shared<DriveView>(), std::make_unique<XcbScreenSource>());
    capture.setFile(file);

    QElapsedTimer elapsed;
    QElapsedTimer turn;
    qint64 longestTurn = 0;
    QTimer look;
    QObject::connect(&look, &QTimer::timeout, &look, [&] {
        longestTurn = std::max(longestTurn, turn.nsecsElapsed());
        turn.start();
        // The file takes its name when it is complete.
        if (QFile::exists(file))
            QApplication::quit();
    });
    look.start(1);
    elapsed.start();
    turn.start();
    capture.setCapture(true);
    QApplication::exec();
    std::printf("%.1f %.1f %ld\n", static_cast<double>(elapsed.nsecsElapsed()) / 1e6,
                static_cast<double>(longestTurn) / 1e6, bench::mostResidentKilobytes());
    return 0;
}
