#pragma once

#include <memory>
#include <optional>
#include <stop_token>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include "platform/mail/text/MailCharset.h"
#include "platform/mail/text/MailParts.h"

class QIODevice;

namespace vandrel {

/// The octets of a part's body, its transfer encoding undone, piece by piece.
class MailOctets
{
public:
    /// Reads the body of `part`, which lies in `message`; both outlive this.
    MailOctets(QIODevice &message, const MailPart &part, std::stop_token stop);
    ~MailOctets();
    MailOctets(const MailOctets &) = delete;
    MailOctets &operator=(const MailOctets &) = delete;

    /// The next octets, valid until the next call; empty at the end, and after a stop.
    QByteArrayView next();
    /// The next octets as they are in the mail, for who only counts them. Not together with next().
    QByteArrayView nextRaw();
    /// Octets of the mail that were not read yet.
    qint64 left() const { return m_end - m_at; }
    /// True when next() gives the octets as they are.
    bool areAsTheyAre() const { return !m_decoder; }
    /// True when next() undoes base64.
    bool isOfBase64() const { return m_ofBase64; }

private:
    class Decoder;

    QByteArrayView read();
    QByteArrayView decoded(QByteArrayView raw);
    bool looksLikeBase64();

    QIODevice &m_message;
    std::stop_token m_stop;
    qint64 m_at;
    qint64 m_end;
    QByteArray m_buffer;
    std::unique_ptr<Decoder> m_decoder; // none: the octets are what they are
    bool m_ofBase64 = false;
    bool m_finished = false;
};

/// The text of a part's body, its character set decoded, piece by piece.
class MailCharacters
{
public:
    /// `charset` as a mail names it; a byte order mark counts for more.
    MailCharacters(QIODevice &message, const MailPart &part, QByteArray charset, const std::stop_token &stop);

    /// The next characters; empty at the end, and after a stop.
    QString next();
    /// Octets of the mail that were not read yet.
    qint64 left() const { return m_octets.left(); }

private:
    QString decode(QByteArrayView octets);

    MailOctets m_octets;
    QByteArray m_charsetName;
    std::optional<MailCharset> m_charset;
};

/// How many octets the body of `part` has, its transfer encoding undone.
qint64 decodedSize(QIODevice &message, const MailPart &part, const std::stop_token &stop);

} // namespace vandrel
