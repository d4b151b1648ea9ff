// Reads any octets as a POP3 server's: as reply lines, as the lines of its answers, and as a message. However a message
// is cut into pieces, the same comes out.
#include <cstdint>

#include "platform/mail/pop/PopLogin.h"
#include "platform/mail/pop/PopMessageReader.h"
#include "platform/mail/pop/PopReply.h"
#include "platform/net/SaslResponses.h"

namespace {

using namespace vandrel;

void readLines(const QByteArray &octets)
{
    PopCapabilities offered;
    const QByteArrayList lines = octets.split('\n');
    for (const QByteArray &line : lines) {
        const PopReply reply = PopReply::parse(line);
        if (reply.text().contains(u'\n') || reply.text().contains(QChar(0)))
            qFatal("a control character is shown");
        const auto numbers = PopNumbers::parse(reply.words);
        if (numbers && (numbers->first < 0 || numbers->second < 0))
            qFatal("a number is negative");
        offered.add(line);
        const QByteArray stamp = apopStamp(line);
        if (stamp.contains(' ') || stamp.contains('\r'))
            qFatal("a time stamp would break a command");
        saslCramMd5Response("user", "password", reply.words);
    }
    chooseLogin(offered, false, false);
}

QByteArray readMessage(const QByteArray &octets, qsizetype piece, bool strict, qsizetype &read)
{
    PopMessageReader reader(strict);
    QByteArray message;
    read = 0;
    while (read < octets.size() && !reader.isAtEnd()) {
        const QByteArrayView next = QByteArrayView(octets).sliced(read, qMin(piece, octets.size() - read));
        read += reader.read(next, [&](QByteArrayView some) { message.append(some.data(), some.size()); });
    }
    return message;
}

void readMessages(const QByteArray &octets, bool strict)
{
    qsizetype whole = 0;
    const QByteArray message = readMessage(octets, qMax<qsizetype>(1, octets.size()), strict, whole);
    for (const qsizetype piece : {1, 2, 3, 7}) {
        qsizetype read = 0;
        if (readMessage(octets, piece, strict, read) != message || read != whole)
            qFatal("a message depends on how it is cut");
    }
    if (message.size() > octets.size())
        qFatal("a message is longer than what was sent");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray octets(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    readLines(octets);
    readMessages(octets, true);
    readMessages(octets, false);
    return 0;
}
