// Logs in to a POP3 mailbox and fetches its messages one by one through the control, as the reader's window does:
//
//     mail_fetch SERVER USER PASSWORD
//
// Prints one line: milliseconds, messages, characters of readable text, the longest time that the event loop was away
// in milliseconds, and the most memory that was resident in kilobytes. bench/mail-fetch runs it beside its peers.

#include <QCoreApplication>
#include <QElapsedTimer>

#include "LoopWatch.h"
#include "Memory.h"
#include "platform/mail/pop/PopMailbox.h"

using namespace vandrel;

namespace {

/// Fetches the whole mailbox and ends the program.
class Fetcher : public QObject
{
public:
    Fetcher()
    {
        connect(&m_mailbox, &POPMail::HasMail, this, &Fetcher::fetchNext);
        connect(&m_mailbox, &POPMail::MailText, this,
                [this](const QString &text) { m_characters += text.size(); });
        connect(&m_mailbox, &POPMail::MailDownloaded, this, &Fetcher::fetchNext);
        connect(&m_mailbox, &POPMail::Error, this, [](bool, std::int32_t, const QString &text) {
            std::fprintf(stderr, "%s\n", qPrintable(text));
            QCoreApplication::exit(1);
        });
        connect(&m_mailbox, &POPMail::Disconnected, this, [] { QCoreApplication::quit(); });
    }

    void start(const QStringList &arguments)
    {
        m_elapsed.start();
        m_mailbox.setPOPServer(arguments.at(1));
        m_mailbox.setPOPUser(arguments.at(2));
        m_mailbox.setPOPPassword(arguments.at(3));
        m_mailbox.setConnectNow(true);
    }

    qint64 milliseconds() const { return m_elapsed.elapsed(); }
    int messages() const { return m_number; }
    qint64 characters() const { return m_characters; }

private:
    void fetchNext()
    {
        if (m_number == m_mailbox.MailCount()) {
            m_mailbox.setDisconnectNow(true);
            return;
        }
        m_mailbox.setMailNumber(static_cast<std::int16_t>(++m_number));
        m_mailbox.setRetrieveNow(true);
    }

    PopMailbox m_mailbox;
    QElapsedTimer m_elapsed;
    int m_number = 0;
    qint64 m_characters = 0;
};

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    if (arguments.size() != 4)
        return 2;
    Fetcher fetcher;
    bench::LoopWatch watch;
    fetcher.start(arguments);
    const int result = QCoreApplication::exec();
    std::printf("%lld %d %lld %.1f %ld\n", static_cast<long long>(fetcher.milliseconds()), fetcher.messages(),
                static_cast<long long>(fetcher.characters()), watch.worstGap(),
                bench::mostResidentKilobytes());
    return result;
}
