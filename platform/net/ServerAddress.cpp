#include "platform/net/ServerAddress.h"

#include <algorithm>
#include <optional>

#include <QCoreApplication>
#include <QHostAddress>
#include <QUrl>

#include "platform/net/ServerLine.h"

namespace vandrel {

namespace {

constexpr qsizetype longestName = 253;
constexpr qsizetype longestLabel = 63;

QString tr(const char *text)
{
    return QCoreApplication::translate("ServerAddress", text);
}

bool holdsBlankOrControl(const QString &text)
{
    return std::any_of(text.begin(), text.end(),
                       [](QChar c) { return c.isSpace() || c.category() == QChar::Other_Control; });
}

bool isHexDigit(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'f') || (c >= u'A' && c <= u'F');
}

// Nothing where a "%" is not followed by two digits or stands for an octet that no command may carry.
std::optional<QString> percentDecoded(const QString &text)
{
    for (qsizetype at = text.indexOf(u'%'); at >= 0; at = text.indexOf(u'%', at + 1)) {
        if (at + 2 >= text.size() || !isHexDigit(text.at(at + 1)) || !isHexDigit(text.at(at + 2)))
            return std::nullopt;
    }
    const QByteArray octets = QByteArray::fromPercentEncoding(text.toUtf8());
    if (breaksTheLine(octets))
        return std::nullopt;
    return QString::fromUtf8(octets);
}

bool isNameCharacter(QChar c)
{
    return (c >= u'0' && c <= u'9') || (c >= u'a' && c <= u'z') || c == u'-' || c == u'_';
}

bool isLabel(const QString &label)
{
    return !label.isEmpty() && label.size() <= longestLabel
        && std::all_of(label.begin(), label.end(), isNameCharacter);
}

/// Reads one address from left to right; the first problem ends it.
class AddressReader
{
public:
    AddressReader(const QString &typed, const std::vector<ServerScheme> &schemes)
        : m_rest(typed.trimmed()), m_schemes(schemes)
    { }

    ServerAddress read()
    {
        if (holdsBlankOrControl(m_rest))
            m_address.problem = tr("A server's address holds no blanks or line breaks.");
        if (usable())
            readScheme();
        if (usable())
            readPath();
        if (usable())
            readUser();
        if (usable())
            readHostAndPort();
        return m_address;
    }

private:
    bool usable() const { return m_address.isUsable(); }

    void readScheme()
    {
        const qsizetype end = m_rest.indexOf(QStringLiteral("://"));
        const QString typed = end < 0 ? m_schemes.front().name : m_rest.left(end).toLower();
        const auto found = std::find_if(m_schemes.begin(), m_schemes.end(),
                                        [&](const ServerScheme &scheme) { return scheme.name == typed; });
        if (found == m_schemes.end()) {
            m_address.problem = tr("An address here begins with %1, or with the server's name.").arg(names());
            return;
        }
        m_address.scheme = found->name;
        m_address.port = found->port;
        m_address.implicitTls = found->implicitTls;
        if (end >= 0)
            m_rest.remove(0, end + 3);
    }

    QString names() const
    {
        QStringList names;
        for (const ServerScheme &scheme : m_schemes)
            names += scheme.name + QStringLiteral("://");
        return names.join(tr(" or "));
    }

    void readPath()
    {
        const qsizetype slash = m_rest.indexOf(u'/');
        if (slash < 0)
            return;
        const auto path = percentDecoded(m_rest.mid(slash));
        if (!path) {
            m_address.problem = tr("What follows the server's name is not percent-encoded correctly.");
            return;
        }
        m_address.path = *path;
        m_rest.truncate(slash);
    }

    // An "@" of a user's own may stand as it is: the last one ends the user and the password.
    void readUser()
    {
        const qsizetype at = m_rest.lastIndexOf(u'@');
        if (at < 0)
            return;
        const QString login = m_rest.left(at);
        m_rest.remove(0, at + 1);
        const qsizetype colon = login.indexOf(u':');
        const auto user = percentDecoded(colon < 0 ? login : login.left(colon));
        const auto password = percentDecoded(colon < 0 ? QString() : login.mid(colon + 1));
        if (!user || !password) {
            m_address.problem = tr("The user or the password before the server's name is not percent-encoded "
                                   "correctly: a \"%\" of its own is written %25.");
            return;
        }
        m_address.userGiven = true;
        m_address.user = *user;
        m_address.password = *password;
    }

    void readHostAndPort()
    {
        if (m_rest.startsWith(u'['))
            readBracketed();
        else if (m_rest.count(u':') > 1)
            setIPv6(m_rest);
        else
            readNameAndPort();
    }

    void readBracketed()
    {
        const qsizetype end = m_rest.indexOf(u']');
        const QString behind = m_rest.mid(end + 1);
        if (end < 0 || (!behind.isEmpty() && !behind.startsWith(u':'))) {
            m_address.problem = tr("\"%1\" is not an IPv6 address in brackets.").arg(m_rest);
            return;
        }
        setIPv6(m_rest.mid(1, end - 1));
        if (usable() && !behind.isEmpty())
            readPort(behind.mid(1));
    }

    void setIPv6(const QString &text)
    {
        const QHostAddress address(text);
        if (address.protocol() != QAbstractSocket::IPv6Protocol)
            m_address.problem = tr("\"%1\" is not an IPv6 address.").arg(text);
        else
            m_address.host = address.toString();
    }

    void readNameAndPort()
    {
        const qsizetype colon = m_rest.indexOf(u':');
        const QString name = colon < 0 ? m_rest : m_rest.left(colon);
        m_address.host = hostNameInAscii(name);
        if (name.isEmpty())
            m_address.problem = tr("No server was named.");
        else if (m_address.host.isEmpty())
            m_address.problem = tr("\"%1\" is not the name of a server.").arg(name);
        else if (colon >= 0)
            readPort(m_rest.mid(colon + 1));
    }

    void readPort(const QString &text)
    {
        const bool digits = !text.isEmpty()
            && std::all_of(text.begin(), text.end(), [](QChar c) { return c >= u'0' && c <= u'9'; });
        bool converted = false;
        const ushort port = text.toUShort(&converted);
        if (!digits || !converted || port == 0) {
            m_address.problem = tr("\"%1\" is not a port: a number from 1 to 65535 is.").arg(text);
            return;
        }
        m_address.port = port;
        m_address.portGiven = true;
        // The usual port of a scheme with implicit TLS understands nothing else.
        m_address.implicitTls = m_address.implicitTls
            || std::any_of(m_schemes.begin(), m_schemes.end(), [&](const ServerScheme &scheme) {
                                    return scheme.implicitTls && scheme.port == port;
                                });
    }

    QString m_rest;
    const std::vector<ServerScheme> &m_schemes;
    ServerAddress m_address;
};

} // namespace

QString hostNameInAscii(const QString &typed)
{
    QString name = QString::fromLatin1(QUrl::toAce(typed)).toLower();
    if (name.endsWith(u'.'))
        name.chop(1);
    const QStringList labels = name.split(u'.');
    const bool valid = name.size() <= longestName && std::all_of(labels.begin(), labels.end(), isLabel);
    return valid ? name : QString();
}

bool ServerAddress::isThisMachine() const
{
    return host == u"localhost" || host.endsWith(u".localhost") || QHostAddress(host).isLoopback();
}

ServerAddress ServerAddress::parse(const QString &typed, const std::vector<ServerScheme> &schemes)
{
    return AddressReader(typed, schemes).read();
}

} // namespace vandrel
