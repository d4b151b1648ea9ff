// Scans a range of addresses in the ping tool's window, as its user does:
//
//     ping_scan PREFIX FROM TO TIME-OUT
//
// Prints one line: milliseconds in all, how many addresses answered, and the most memory that was resident in
// kilobytes. bench/ping-scan runs it beside its peer.

#include <cstdio>

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>

#include "Memory.h"
#include "controls/ListBox.h"
#include "internet/frmPing.h"
#include "platform/ping/EchoPing.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 5)
        return 2;
    frmPing window(std::make_unique<EchoPing>());
    window.show();
    window.IP->setText(arguments[1]);
    window.IPfrom->setText(arguments[2]);
    window.IPto->setText(arguments[3]);
    window.TimeOutText->setText(arguments[4]);
    QApplication::processEvents();
    QElapsedTimer elapsed;
    elapsed.start();
    window.ScanCommand->click();
    std::printf("%.1f %d %ld\n", static_cast<double>(elapsed.nsecsElapsed()) / 1e6,
                window.UserList->ListCount(), bench::mostResidentKilobytes());
    return 0;
}
