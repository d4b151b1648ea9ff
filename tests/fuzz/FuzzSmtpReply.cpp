// Lines of a mail server, and the challenges of its login: the reader of replies meets them before anything else.

#include <cstddef>
#include <cstdint>

#include <QByteArray>

#include "platform/mail/smtp/SmtpLogin.h"
#include "platform/mail/smtp/SmtpReply.h"

using namespace vandrel;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArrayView octets(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    SmtpLogin login(QStringLiteral("user"), QStringLiteral("password"));
    SmtpReplyReader reader;
    for (const QByteArray &line : octets.toByteArray().split('\n')) {
        if (reader.take(line) != SmtpReplyReader::State::Complete)
            continue;
        const SmtpReply &reply = reader.reply();
        if (reply.kind() < 2 || reply.kind() > 5 || reply.texts.isEmpty())
            qFatal("a reply without a code or a text");
        const QString words = login.withoutLogin(reply.words());
        if (words.contains(u'\r') || words.contains(u'\n') || words.contains(QStringLiteral("password")))
            qFatal("words that break a line or tell the password");
        if (login.choose(SmtpServices::of(reply).logins, true))
            static_cast<void>(login.answer(reply.texts.last()));
    }
    return 0;
}
