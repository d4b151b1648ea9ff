// Reads any octets as the lines of replies, and each reply as whatever it could be an answer to.
#include <cstdint>

#include "platform/ftp/Reply.h"

using namespace vandrel;

namespace {

void read(const FtpReply &reply)
{
    if (reply.number < 100 || reply.number > 599 || reply.lines.isEmpty())
        qFatal("a reply has no number or no line");
    if (reply.text().size() > 500)
        qFatal("a text is too long to be shown");
    const auto port = passivePort(reply);
    if (port && *port < 1024)
        qFatal("a connection would go to a port of the system's own");
    const auto size = sizeTold(reply);
    if (size && *size < 0)
        qFatal("a size is negative");
    (void)extendedPassivePort(reply);
    (void)quotedDirectory(reply);
    (void)featuresOffered(reply);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray octets(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
    FtpReplyReader reader;
    for (const QByteArray &line : octets.split('\n')) {
        const FtpReplyReader::State state = reader.addLine(line);
        if (state == FtpReplyReader::State::Complete)
            read(reader.reply());
    }
    return 0;
}
