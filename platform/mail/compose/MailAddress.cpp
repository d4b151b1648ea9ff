#include "platform/mail/compose/MailAddress.h"

#include <algorithm>
#include <utility>

#include <QByteArrayList>
#include <QHostAddress>
#include <QUrl>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

// RFC 5321, section 4.5.3.1.3: a path of 256 octets with its angle brackets.
constexpr qsizetype longestAddress = 254;
constexpr qsizetype longestDomain = 253;
constexpr qsizetype longestLabel = 63;

bool isAtomText(QChar c)
{
    if (c.unicode() > 0x9f)
        return !c.isSpace();
    return c.isLetterOrNumber() || QStringView(u"!#$%&'*+-/=?^_`{|}~").contains(c);
}

// Walks over a typed list. Quotation marks, comments and angle brackets hide the separators within them.
class AddressScanner
{
public:
    AddressScanner(QString list, QString field) : m_list(std::move(list)), m_field(std::move(field)) { }

    std::vector<MailAddress> read();

private:
    [[noreturn]] void refuse(const QString &what, const QString &why) const;
    void readOne();
    void readQuoted(bool ofAngle);
    void readComment();
    void readCharacter(QChar c);
    void takeGroupName();
    void takeAddress();
    MailAddress addressOf(const QString &text) const;
    QByteArray localOf(QString text, const QString &address) const;
    QByteArray domainOf(const QString &text, const QString &address) const;
    // As much of the list as belongs to the address under way.
    QString piece() const { return m_list.mid(m_start, m_at + 1 - m_start).trimmed(); }

    const QString m_list;
    const QString m_field;
    std::vector<MailAddress> m_found;
    qsizetype m_at = 0;
    // The address under way: where it begins, what stands outside and inside of angle brackets, and in
    // parentheses.
    qsizetype m_start = 0;
    QString m_outside;
    QString m_phrase;
    QString m_angle;
    QString m_comment;
    bool m_inAngle = false;
    bool m_hadAngle = false;
    bool m_sawAddress = false;
};

void AddressScanner::refuse(const QString &what, const QString &why) const
{
    throw RuntimeError(
        error::InvalidProcedureCall,
        QStringLiteral("%1: \"%2\" cannot be used as a mail address: %3").arg(m_field, what.left(200), why));
}

std::vector<MailAddress> AddressScanner::read()
{
    while (m_at < m_list.size())
        readOne();
    return std::move(m_found);
}

void AddressScanner::readOne()
{
    m_start = m_at;
    m_outside.clear();
    m_phrase.clear();
    m_angle.clear();
    m_comment.clear();
    m_inAngle = m_hadAngle = m_sawAddress = false;
    while (m_at < m_list.size()) {
        const QChar c = m_list[m_at];
        if (!m_inAngle && (c == u',' || c == u';'))
            break;
        readCharacter(c);
    }
    if (m_inAngle)
        refuse(piece(), QStringLiteral("its \"<\" is not closed."));
    takeAddress();
    ++m_at;
}

void AddressScanner::readCharacter(QChar c)
{
    if (c == u'"')
        return readQuoted(m_inAngle);
    if (c == u'(' && !m_inAngle)
        return readComment();
    if (m_hadAngle && !m_inAngle && !c.isSpace())
        refuse(piece(),
               QStringLiteral("something follows its \">\"; separate addresses by commas or semicolons."));
    ++m_at;
    if (c == u'<' && !m_inAngle) {
        m_inAngle = m_hadAngle = m_sawAddress = true;
    } else if (c == u'>' && m_inAngle) {
        m_inAngle = false;
    } else if (c == u':' && !m_sawAddress) {
        takeGroupName();
    } else if (m_inAngle) {
        m_angle += c;
    } else {
        m_sawAddress = m_sawAddress || c == u'@';
        m_outside += c;
        m_phrase += c;
    }
}

// A quoted string belongs to the name, or to the local part. `m_outside` and `m_angle` keep it as typed.
void AddressScanner::readQuoted(bool ofAngle)
{
    const qsizetype start = m_at++;
    QString text;
    while (m_at < m_list.size() && m_list[m_at] != u'"') {
        if (m_list[m_at] == u'\\')
            ++m_at;
        if (m_at < m_list.size())
            text += m_list[m_at++];
    }
    if (m_at >= m_list.size())
        refuse(piece(), QStringLiteral("its quotation mark is not closed."));
    ++m_at;
    (ofAngle ? m_angle : m_outside) += m_list.mid(start, m_at - start);
    if (!ofAngle)
        m_phrase += text;
}

void AddressScanner::readComment()
{
    int depth = 0;
    const qsizetype start = m_at;
    for (; m_at < m_list.size(); ++m_at) {
        const QChar c = m_list[m_at];
        if (c == u'\\')
            ++m_at;
        else if (c == u'(')
            ++depth;
        else if (c == u')' && --depth == 0)
            break;
    }
    if (m_at >= m_list.size())
        refuse(piece(), QStringLiteral("its parenthesis is not closed."));
    m_comment = m_list.mid(start + 1, m_at - start - 1).trimmed();
    ++m_at;
}

void AddressScanner::takeGroupName()
{
    m_start = m_at;
    m_outside.clear();
    m_phrase.clear();
    m_comment.clear();
}

void AddressScanner::takeAddress()
{
    const QString outside = m_outside.trimmed();
    if (!m_hadAngle && outside.isEmpty())
        return;
    MailAddress address = addressOf(m_hadAngle ? m_angle.trimmed() : outside);
    address.name = m_hadAngle ? m_phrase.trimmed() : m_comment;
    m_found.push_back(address);
}

// The "@" that parts an address is its last one outside of quotation marks.
MailAddress AddressScanner::addressOf(const QString &text) const
{
    const qsizetype at = text.lastIndexOf(u'@');
    if (at < 0 || text.indexOf(u'"', at) >= 0)
        refuse(text.isEmpty() ? piece() : text,
               QStringLiteral("it needs a name, \"@\" and a domain, as in someone@example.org."));
    const MailAddress address{{}, localOf(text.left(at), text), domainOf(text.mid(at + 1), text)};
    if (address.addrSpec().size() > longestAddress)
        refuse(text, QStringLiteral("it is longer than %1 characters.").arg(longestAddress));
    return address;
}

// Quoted where dots stand oddly, which some providers allow; as plain as it can be otherwise.
QByteArray AddressScanner::localOf(QString text, const QString &address) const
{
    text = text.trimmed();
    bool quoted = text.size() >= 2 && text.startsWith(u'"') && text.endsWith(u'"');
    if (quoted) {
        QString plain;
        for (qsizetype i = 1; i + 1 < text.size(); ++i) {
            if (text[i] == u'\\')
                ++i;
            plain += text[i];
        }
        text = plain;
    }
    const auto isPlain = [](QChar c) { return c == u'.' || isAtomText(c); };
    const bool plain = !text.isEmpty() && std::all_of(text.cbegin(), text.cend(), isPlain);
    if (!quoted && !plain)
        refuse(address,
               QStringLiteral("what stands before its \"@\" is empty or holds a character that needs "
                              "quotation marks."));
    quoted = !plain || text.startsWith(u'.') || text.endsWith(u'.') || text.contains(QStringLiteral(".."));
    if (!quoted)
        return text.toUtf8();
    text.replace(u'\\', QStringLiteral("\\\\")).replace(u'"', QStringLiteral("\\\""));
    return '"' + text.toUtf8() + '"';
}

QByteArray AddressScanner::domainOf(const QString &text, const QString &address) const
{
    const QString domain = text.trimmed();
    if (domain.startsWith(u'[') && domain.endsWith(u']')) {
        const QString inner = domain.mid(1, domain.size() - 2);
        const bool ofSix = inner.startsWith(QStringLiteral("IPv6:"), Qt::CaseInsensitive);
        const QHostAddress literal(ofSix ? inner.mid(5) : inner);
        if (!literal.isNull() && literal.scopeId().isEmpty()
            && ofSix == (literal.protocol() == QAbstractSocket::IPv6Protocol))
            return '[' + QByteArray(ofSix ? "IPv6:" : "") + literal.toString().toLatin1() + ']';
    }
    const QByteArray ascii = asciiDomain(domain);
    if (ascii.isEmpty())
        refuse(address, QStringLiteral("\"%1\" is no domain.").arg(domain));
    return ascii;
}

bool isLabel(const QByteArray &label)
{
    const auto allowed = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '-'
            || c == '_';
    };
    return !label.isEmpty() && label.size() <= longestLabel && !label.startsWith('-') && !label.endsWith('-')
        && std::all_of(label.begin(), label.end(), allowed);
}

} // namespace

bool MailAddress::needsUtf8() const
{
    return std::any_of(local.begin(), local.end(),
                       [](char c) { return static_cast<unsigned char>(c) > 0x7f; });
}

std::vector<MailAddress> readMailAddresses(const QString &list, const QString &field)
{
    return AddressScanner(list, field).read();
}

QByteArray asciiDomain(const QString &domain)
{
    const auto isAscii = [](QChar c) { return c.unicode() < 0x80; };
    const bool plain = std::all_of(domain.cbegin(), domain.cend(), isAscii);
    QByteArray ascii = plain ? domain.toLatin1() : QUrl::toAce(domain);
    if (ascii.endsWith('.'))
        ascii.chop(1);
    const QByteArrayList labels = ascii.split('.');
    const bool sound = ascii.size() <= longestDomain && std::all_of(labels.begin(), labels.end(), isLabel);
    return sound ? ascii : QByteArray();
}

} // namespace vandrel
