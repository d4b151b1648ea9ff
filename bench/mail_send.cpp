// Sends files as attachments of one message through the SMTP control, as the sender's window does:
//
//     mail_send SERVER PATH...
//
// The paths are native ones. Prints one line: milliseconds, the longest time that the event loop was away in
// milliseconds, and the most memory that was resident in kilobytes. bench/mail-send runs it beside its peers.

#include <QCoreApplication>
#include <QElapsedTimer>

#include "LoopWatch.h"
#include "Memory.h"
#include "controls/DriveView.h"
#include "platform/mail/smtp/SmtpSender.h"

using namespace vandrel;

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
                bench::mostResidentKilobytes());
    return result;
}
