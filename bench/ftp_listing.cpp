// Connects the FTP client's window to a server and waits until the listing of its first directory is painted:
//
//     ftp_listing SERVER USER PASSWORD
//
// Prints one line: how many entries are listed, the milliseconds from "Connect" until they are painted, and the longest
// time that the event loop was away in milliseconds. bench/ftp runs it beside its peers.

#include <QApplication>
#include <QElapsedTimer>
#include <QLineEdit>
#include <QPushButton>

#include "BenchText.h"
#include "controls/ListBox.h"
#include "internet/frmFTP.h"
#include "platform/filesystem/DriveTable.h"
#include "platform/filesystem/NativeFolders.h"
#include "platform/ftp/SocketFTPClient.h"

using namespace vandrel;

namespace {

/// Ends the program once the list has been painted with something in it.
class PaintWatch : public QObject
{
public:
    explicit PaintWatch(ListBox *list) : m_list(list) { list->viewport()->installEventFilter(this); }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_list->ListCount() > 0)
            QMetaObject::invokeMethod(this, &QCoreApplication::quit, Qt::QueuedConnection);
        return false;
    }

private:
    ListBox *m_list;
};

} // namespace

int main(int argc, char **argv)
{
    const QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    const auto view = std::make_shared<DriveView>();
    const std::unique_ptr<DriveTable> drives = DriveTable::create(*view);
    frmFTP form(std::make_unique<SocketFTPClient>(view), std::make_shared<NativeFolders>(view, *drives));
    QObject::connect(form.FTPClient1.get(), &FTPClient::Error, [](bool, std::int32_t, const QString &text) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        QApplication::exit(1);
    });
    form.FTPserveraddress->setText(arguments[1]);
    form.Username->setText(arguments[2]);
    form.Password->setText(arguments[3]);
    form.show();
    bench::settle();
    const PaintWatch painted(form.RemoteFilesList);
    QElapsedTimer elapsed;
    elapsed.start();
    const bench::LoopWatch watch;
    form.ConnectButton->click();
    const int result = QApplication::exec();
    std::printf("%d %lld %.1f\n", form.RemoteFilesList->ListCount(),
                static_cast<long long>(elapsed.elapsed()), watch.worstGap());
    return result;
}
