#pragma once

#include <memory>

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

namespace vandrel {

/// Decodes octets in a character set named by a mail, piece by piece.
///
/// What names no known set, names none, or names US-ASCII is taken as UTF-8 in which an octet that forms no
/// character is one of Windows-1252: that reads the octets of nearly every mail that says nothing or lies.
/// ISO-8859-1 is taken as Windows-1252, as those who write it mean it. In any other set an octet that forms no
/// character becomes U+FFFD.
class MailCharset
{
public:
    explicit MailCharset(const QByteArray &name);
    ~MailCharset();
    MailCharset(const MailCharset &) = delete;
    MailCharset &operator=(const MailCharset &) = delete;

    /// Decodes the next octets; a character that they cut off waits for the rest.
    QString decode(QByteArrayView octets);
    /// What still waits when there is no more.
    QString finish();

private:
    class Converter;

    QString decodeUtf8(QByteArrayView octets);

    std::unique_ptr<Converter> m_converter; // none: UTF-8 with Windows-1252 for what is not
    QByteArray m_waiting;
};

/// The character of one octet of Windows-1252; the five that it leaves undefined stay control characters.
QChar westernCharacter(char octet);

/// `octets` whole, as a mail's undeclared octets are taken.
QString undeclaredText(QByteArrayView octets);

} // namespace vandrel
