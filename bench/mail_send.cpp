// Sends files as attachments of one message through the SMTP control, as the sender's window does:
//
//     mail_send SERVER PATH...
//
// The paths are native ones. Prints one line: milliseconds, the longest time that the event loop was away in
// milliseconds, and the most memory that was resident in kilobytes. bench/mail-send runs it beside its peers.

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>

#include "BenchText.h"
#include "controls/DriveView.h"
#include "platform/mail/smtp/SmtpSender.h"

using namespace vandrel;

namespace {

long mostResidentKilobytes()
{
    QFile file(QStringLiteral("/proc/self/status"));
    if (!file.open(QIODevice::ReadOnly))
        return 0;
    const QByteArrayList lines = file.readAll().split('\n');
    for (const QByteArray &line : lines) {
        if (line.startsWith("VmHWM:"))
            return line.mid(6).simplified().split(' ').first().toLong();
    }
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() < 3)
        return 2;
    SmtpSender smtp(std::make_shared<DriveView>());
    QObject::connect(&smtp, &Smtp::Error, [](const QString &text) {
        std::fprintf(stderr, "%s\n", qPrintable(text));
        QCoreApplication::exit(1);
    });
    QObject::connect(&smtp, &Smtp::Disconnected, [] { QCoreApplication::quit(); });
    smtp.setServerDomain(arguments[1]);
    smtp.setFromAddress(QStringLiteral("me@example.org"));
    smtp.setToAddress(QStringLiteral("you@example.org"));
    smtp.setMessageSubject(QStringLiteral("Files"));
    smtp.setMessageBody(QStringLiteral("Here they are.\r\n"));
    smtp.setAttachmentList(arguments.mid(2).join(u';') + u';');
    QElapsedTimer elapsed;
    elapsed.start();
    const bench::LoopWatch watch;
    smtp.setSendNow(true);
    const int result = QCoreApplication::exec();
    std::printf("%lld %.1f %ld\n", static_cast<long long>(elapsed.elapsed()), watch.worstGap(),
                mostResidentKilobytes());
    return result;
}
