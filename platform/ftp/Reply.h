#pragma once

#include <cstdint>
#include <optional>

#include <QByteArray>
#include <QByteArrayList>
#include <QByteArrayView>
#include <QSet>
#include <QString>

namespace vandrel {

/// A reply of an FTP server (RFC 959, 4.2): a number of three digits and one or more lines of text.
struct FtpReply {
    int number = 0;
    /// Each line's text; of the first and the last one what follows the number.
    QByteArrayList lines;

    bool isPreliminary() const { return number / 100 == 1; }
    bool isCompletion() const { return number / 100 == 2; }
    bool isIntermediate() const { return number / 100 == 3; }
    bool isTransientFailure() const { return number / 100 == 4; }
    /// The last line, which is what servers mean to be read, as text: UTF-8 where it is, else Latin-1; control
    /// characters as blanks. At most 500 characters.
    QString text() const;
};

/// Puts replies together from lines. A reply of several lines begins with "123-" and ends with a line that begins
/// with "123 "; what stands between is text, whatever it looks like.
class FtpReplyReader
{
public:
    /// The octets that one reply may have.
    static constexpr qsizetype longestReply = 64 * 1024;

    enum class State {
        Incomplete, ///< more lines belong to the reply
        Complete, ///< reply() is the reply
        Broken ///< this is no FTP; the connection is of no use any more
    };

    /// Takes a line without its line end. Once broken, it stays so.
    State addLine(QByteArrayView line);
    /// The reply that the last line completed.
    const FtpReply &reply() const { return m_reply; }

private:
    State begin(QByteArrayView line);
    State go(QByteArrayView line);

    FtpReply m_reply;
    qsizetype m_size = 0;
    bool m_isOpen = false;
    bool m_isBroken = false;
};

/// The directory that a reply 257 names: between its first and its last quotation mark, doubled ones undone. None
/// for a reply that quotes nothing.
std::optional<QByteArray> quotedDirectory(const FtpReply &reply);

/// The port of a reply 229, "(|||port|)" with any separator (RFC 2428); none for a malformed one and for port 0.
std::optional<std::uint16_t> extendedPassivePort(const FtpReply &reply);

/// The port of a reply 227, the last two of its six numbers; the address is not read, because the connection goes to
/// the server's own. None for a malformed one and for ports below 1024.
std::optional<std::uint16_t> passivePort(const FtpReply &reply);

/// The size of a reply 213, in octets; none for anything but a number from 0 on.
std::optional<qint64> sizeTold(const FtpReply &reply);

/// The commands that a reply to FEAT offers, in capitals, without their parameters ("MLST", "UTF8").
QSet<QByteArray> featuresOffered(const FtpReply &reply);

/// Whether a reply to FEAT offers to encrypt with AUTH TLS (RFC 4217, 6).
bool offersTls(const FtpReply &reply);

} // namespace vandrel
