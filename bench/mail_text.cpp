// Turning received mails into readable text: one of 100 MB with an attachment, one of 100 MB of text, and 2,000 of
// 20 KB, beside Python's email package decoding the same files' header fields, texts and attachments. Each is a
// process of its own, from its start to its end: this program runs itself with a file's name.

#include <algorithm>
#include <cstdio>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include "Figures.h"
#include "Memory.h"
#include "platform/mail/text/MailText.h"

using namespace vandrel;

namespace {

constexpr int runs = 3;
constexpr int longestRun = 10 * 60 * 1000;
constexpr qsizetype large = 100'000'000;
constexpr int manyMails = 2000;
constexpr qsizetype smallMail = 20'000;

constexpr auto peerScript = R"(
import email, email.policy, sys
for name in sys.argv[1:]:
    with open(name, 'rb') as file:
        mail = email.message_from_binary_file(file, policy=email.policy.default)
    fields = [str(mail[field]) for field in ('From', 'To', 'Cc', 'Date', 'Subject')]
    for part in mail.walk():
        if not part.is_multipart():
            part.get_filename(), len(part.get_content())
)";

const QByteArray
    head("From: =?utf-8?q?J=C3=BCrgen?= <j@example.org>\r\nTo: a@example.org\r\nSubject: bench\r\n"
         "Date: Tue, 1 Jul 2003 10:52:37 +0200\r\nMIME-Version: 1.0\r\n");

QByteArray repeated(const QByteArray &line, qsizetype octets)
{
    return line.repeated(octets / line.size() + 1);
}

QByteArray textMail(qsizetype octets)
{
    return head
        + "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
        + repeated("The quick brown f=C3=B6x jumps over the lazy dog, again and again.\r\n", octets);
}

QByteArray attachmentMail(qsizetype octets)
{
    return head
        + "Content-Type: multipart/mixed; boundary=b\r\n\r\n--b\r\nContent-Type: text/plain\r\n\r\nHello\r\n"
        + "--b\r\nContent-Type: application/pdf; name=a.pdf\r\nContent-Transfer-Encoding: base64\r\n\r\n"
        + repeated(QByteArray(57, 'x').toBase64() + "\r\n", octets) + "--b--\r\n";
}

bool write(const QString &name, const QByteArray &octets)
{
    QFile file(name);
    return file.open(QIODevice::WriteOnly) && file.write(octets) == octets.size();
}

// The median of some runs, in milliseconds; -1 when the program failed.
qint64 measured(const QString &program, const QStringList &arguments)
{
    QList<qint64> times;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer timer;
        timer.start();
        const int code = QProcess::execute(program, arguments);
        times.append(timer.elapsed());
        if (code != 0)
            return -1;
    }
    std::sort(times.begin(), times.end());
    return times.at(runs / 2);
}

void compare(const char *what, const QStringList &files)
{
    const qint64 ours = measured(QCoreApplication::applicationFilePath(), files);
    const qint64 peer = measured(QStringLiteral("/usr/bin/python3"),
                                 QStringList{QStringLiteral("-c"), QString::fromLatin1(peerScript)} + files);
    bench::report(what, static_cast<double>(ours), "Python's email", static_cast<double>(peer), 1);
}

int convert(const QStringList &files)
{
    qint64 characters = 0;
    for (const QString &name : files) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly))
            return 1;
        characters += readableMail(file).text.size();
    }
    if (files.size() == 1)
        std::fprintf(stderr, "  %lld characters, %.0f MB of memory\n", static_cast<long long>(characters),
                     static_cast<double>(bench::mostResidentKilobytes()) / 1024);
    return characters > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    if (argc > 1)
        return convert(QCoreApplication::arguments().sliced(1));
    const QTemporaryDir folder;
    const QString attachment = folder.filePath(QStringLiteral("attachment"));
    const QString text = folder.filePath(QStringLiteral("text"));
    if (!write(attachment, attachmentMail(large)) || !write(text, textMail(large)))
        return 1;
    QStringList mails;
    for (int i = 0; i < manyMails; ++i) {
        mails.append(folder.filePath(QString::number(i)));
        if (!write(mails.last(), textMail(smallMail)))
            return 1;
    }
    compare("100 MB with an attachment", {attachment});
    compare("100 MB of text", {text});
    compare("2,000 mails of 20 KB", mails);
    return 0;
}
