#include "platform/mail/smtp/SmtpReply.h"

#include <algorithm>

#include <QStringList>

#include "platform/net/ServerLine.h"

namespace vandrel {

namespace {

constexpr qsizetype longestWords = 1000;

// The code that begins a line, 0 when there is none. A mail server has no preliminary replies.
int codeOf(QByteArrayView line)
{
    constexpr int lowest = 200;
    if (line.size() > 3 && line[3] != ' ' && line[3] != '-')
        return 0;
    const int code = replyNumber(line);
    return code >= lowest ? code : 0;
}

void takeService(SmtpServices &services, const QByteArray &line)
{
    QByteArrayList words = line.simplified().toUpper().split(' ');
    const QByteArray keyword = words.takeFirst();
    if (keyword == "STARTTLS") {
        services.startTls = true;
    } else if (keyword == "8BITMIME") {
        services.eightBitMime = true;
    } else if (keyword == "SMTPUTF8") {
        services.smtpUtf8 = true;
    } else if (keyword == "AUTH") {
        services.logins += words;
    } else if (keyword.startsWith("AUTH=")) {
        // The form of servers older than the standard.
        services.logins += keyword.mid(5);
        services.logins += words;
    } else if (keyword == "SIZE") {
        services.size = true;
        bool isNumber = false;
        const qint64 size = words.value(0).toLongLong(&isNumber);
        if (isNumber && size > 0)
            services.largestMessage = size;
    }
}

} // namespace

QString SmtpReply::words() const
{
    QStringList lines;
    for (const QByteArray &text : texts) {
        const QString line = readableWords(text, longestWords);
        if (!line.isEmpty())
            lines += line;
    }
    QString all = lines.join(u' ');
    if (all.size() > longestWords)
        all = all.left(longestWords) + u'…';
    return all.isEmpty() ? QString::number(code) : QString::number(code) + u' ' + all;
}

SmtpReplyReader::State SmtpReplyReader::take(QByteArrayView line)
{
    if (m_state == State::Broken)
        return m_state;
    const int code = codeOf(line);
    if (m_state == State::Complete) {
        m_reply = {code, {}};
        m_octets = 0;
    }
    m_octets += line.size();
    m_reply.texts += line.sliced(std::min<qsizetype>(4, line.size())).toByteArray();
    if (code == 0 || code != m_reply.code || m_reply.texts.size() > mostLines || m_octets > mostOctets)
        m_state = State::Broken;
    else
        m_state = line.size() > 3 && line[3] == '-' ? State::More : State::Complete;
    return m_state;
}

SmtpServices SmtpServices::of(const SmtpReply &reply)
{
    SmtpServices services;
    for (const QByteArray &line : reply.texts.mid(1))
        takeService(services, line);
    return services;
}

} // namespace vandrel
