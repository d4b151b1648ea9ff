// Transfers one file through the FTP control, as the FTP client's window does:
//
//     ftp_transfer SERVER USER PASSWORD get|put REMOTE LOCAL
//
// LOCAL is a native path. Prints one line: milliseconds, the longest time that the event loop was away in milliseconds,
// and how much the resident memory grew at most, in kilobytes. bench/ftp runs it beside its peers.

#include <QCoreApplication>
#include <QElapsedTimer>

#include "LoopWatch.h"
#include "Memory.h"
#include "controls/DriveView.h"
#include "platform/ftp/SocketFTPClient.h"

using namespace vandrel;

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 7)
        return 2;
    SocketFTPClient ftp(std::make_shared<DriveView>());
    QObject::connect(&ftp, &FTPClient::Error, [](bool, std::int32_t number, const QString &text) {
        std::fprintf(stderr, "%d %s\n", static_cast<int>(number), qPrintable(text));
        QCoreApplication::exit(1);
    });
    QObject::connect(&ftp, &FTPClient::Downloaded, &QCoreApplication::quit);
    QObject::connect(&ftp, &FTPClient::Uploaded, &QCoreApplication::quit);
    ftp.setServerAddress(arguments[1]);
    ftp.setUserName(arguments[2]);
    ftp.setPassword(arguments[3]);
    ftp.setTransferType(QStringLiteral("binary"));
    ftp.setRemoteFileName(arguments[5]);
    ftp.setLocalFileName(arguments[6]);
    const long before = bench::mostResidentKilobytes();
    QElapsedTimer elapsed;
    elapsed.start();
    constexpr int watchInterval = 5;
    const bench::LoopWatch watch(watchInterval);
    ftp.setConnectNow(true);
    if (arguments[4] == QStringLiteral("get"))
        ftp.setDownloadNow(true);
    else
        ftp.setUploadNow(true);
    const int result = QCoreApplication::exec();
    std::printf("%lld %.1f %ld\n", static_cast<long long>(elapsed.elapsed()), watch.worstGap(),
                bench::mostResidentKilobytes() - before);
    return result;
}
