#include "platform/mail/text/MailHeader.h"

#include <algorithm>
#include <array>

#include "platform/mail/mime/MimeLibrary.h"
#include "platform/mail/mime/MimeObject.h"
#include "platform/mail/text/Harmless.h"
#include "platform/mail/text/MailCharset.h"

namespace vandrel {

namespace {

bool isBlank(char octet)
{
    return octet == ' ' || octet == '\t';
}

// The length of the field name that the line begins with; 0 when it begins with none.
qsizetype lengthOfName(QByteArrayView line)
{
    const auto end = std::find_if(line.begin(), line.end(),
                                  [](char octet) { return octet <= ' ' || octet > '~' || octet == ':'; });
    const qsizetype length = end - line.begin();
    const auto colon = std::find_if_not(end, line.end(), isBlank);
    return colon != line.end() && *colon == ':' ? length : 0;
}

// The line that a mailbox file puts before each mail; some servers hand it out.
bool isMailboxLine(QByteArrayView line)
{
    return line.startsWith("From ") || line.startsWith(">From ");
}

struct WantedField {
    QByteArrayView name;
    QByteArray MailFields::*field;
    bool repeats;
};

constexpr std::array wantedFields{
    WantedField{"from", &MailFields::from, false},
    WantedField{"to", &MailFields::to, true},
    WantedField{"cc", &MailFields::cc, true},
    WantedField{"date", &MailFields::date, false},
    WantedField{"subject", &MailFields::subject, false},
    WantedField{"content-type", &MailFields::contentType, false},
    WantedField{"content-disposition", &MailFields::disposition, false},
    WantedField{"content-transfer-encoding", &MailFields::encoding, false},
};

const WantedField *wanted(QByteArrayView name)
{
    const auto found
        = std::find_if(wantedFields.begin(), wantedFields.end(), [name](const WantedField &each) {
              return name.size() == each.name.size() && name.compare(each.name, Qt::CaseInsensitive) == 0;
          });
    return found != wantedFields.end() ? &*found : nullptr;
}

// The library takes texts that end at their first NUL.
QByteArray forLibrary(const QByteArray &field)
{
    QByteArray octets = undeclaredText(field).toUtf8();
    octets.replace('\0', ' ');
    return octets;
}

QByteArray lowerTrimmed(const char *text)
{
    return QByteArray(text ? text : "").trimmed().toLower();
}

// The last part of a path of any system: where the sender kept the file is of no use, and may be meant to harm.
QString withoutFolders(const QString &name)
{
    const qsizetype folders = std::max(name.lastIndexOf(u'/'), name.lastIndexOf(u'\\'));
    return name.mid(folders + 1);
}

QString fileName(const char *parameter)
{
    constexpr int longestName = 255;
    return harmlessLine(withoutFolders(freeText(QByteArray(parameter ? parameter : ""), {})), longestName);
}

// The library takes long over words between commas that are no addresses.
bool looksLikeAddresses(const QByteArray &field)
{
    constexpr qsizetype tolerated = 100;
    return field.count(',') + field.count(':') + field.count(';') <= 4 * field.count('@') + tolerated;
}

bool statesType(const QByteArray &field)
{
    const qsizetype slash = field.indexOf('/');
    const qsizetype parameters = field.indexOf(';');
    return slash > 0 && (parameters < 0 || slash < parameters);
}

void readContentType(const QByteArray &field, MailContent &content)
{
    const MimeObject<GMimeContentType> parsed(
        g_mime_content_type_parse(nullptr, forLibrary(field).constData()));
    if (!parsed)
        return;
    const auto parameter
        = [&parsed](const char *name) { return g_mime_content_type_get_parameter(parsed.get(), name); };
    // What names no type of both halves is text (RFC 2045, 5.2).
    if (statesType(field))
        content.type = lowerTrimmed(MimeString(g_mime_content_type_get_mime_type(parsed.get())).get());
    content.charset = lowerTrimmed(parameter("charset"));
    content.boundary = QByteArray(parameter("boundary"));
    content.flowed = lowerTrimmed(parameter("format")) == "flowed";
    content.deletesSpace = lowerTrimmed(parameter("delsp")) == "yes";
    content.name = fileName(parameter("name"));
}

void readDisposition(const QByteArray &field, MailContent &content)
{
    const MimeObject<GMimeContentDisposition> parsed(
        g_mime_content_disposition_parse(nullptr, forLibrary(field).constData()));
    if (!parsed)
        return;
    content.attached = lowerTrimmed(g_mime_content_disposition_get_disposition(parsed.get())) == "attachment";
    const QString name = fileName(g_mime_content_disposition_get_parameter(parsed.get(), "filename"));
    if (!name.isEmpty())
        content.name = name;
}

} // namespace

bool MailHeader::add(const MailLine &line)
{
    if (!line.first) {
        append(line.octets);
        return true;
    }
    if (line.octets.isEmpty())
        return false;
    if (isBlank(line.octets.front()) && m_begun) {
        append(line.octets);
        return true;
    }
    return begin(line.octets);
}

bool MailHeader::begin(QByteArrayView line)
{
    const qsizetype length = lengthOfName(line);
    if (length == 0) {
        m_field = nullptr;
        return isMailboxLine(line);
    }
    m_begun = true;
    m_field = nullptr;
    const WantedField *const found = wanted(line.first(length));
    if (!found)
        return true;
    QByteArray &field = m_fields.*(found->field);
    if (!field.isEmpty() && !found->repeats)
        return true;
    if (!field.isEmpty())
        field.append(", ");
    m_field = &field;
    append(line.sliced(line.indexOf(':') + 1));
    return true;
}

void MailHeader::append(QByteArrayView octets)
{
    if (m_field)
        m_field->append(octets.first(
            std::min(octets.size(), std::max<qsizetype>(0, m_limits.fieldOctets - m_field->size()))));
}

MailContent mailContent(const MailFields &fields)
{
    ensureMimeLibrary();
    MailContent content;
    if (!fields.contentType.isEmpty())
        readContentType(fields.contentType, content);
    if (!fields.disposition.isEmpty())
        readDisposition(fields.disposition, content);
    content.encoding = fields.encoding.trimmed().toLower();
    return content;
}

QString freeText(const QByteArray &field, const MailLimits &limits)
{
    ensureMimeLibrary();
    const MimeString decoded(g_mime_utils_header_decode_text(nullptr, forLibrary(field).constData()));
    return harmlessLine(QString::fromUtf8(decoded.get()), limits.fieldCharacters);
}

QString addressText(const QByteArray &field, const MailLimits &limits)
{
    ensureMimeLibrary();
    // Far more than is shown, and as much as the library reads in a moment whatever it is.
    constexpr qsizetype looked = 16 * 1024;
    const QByteArray octets = forLibrary(field.first(std::min(field.size(), looked)));
    if (!looksLikeAddresses(octets))
        return freeText(field, limits);
    const MimeObject<InternetAddressList> list(internet_address_list_parse(nullptr, octets.constData()));
    if (!list || internet_address_list_length(list.get()) == 0)
        return freeText(field, limits);
    const MimeString decoded(internet_address_list_to_string(list.get(), nullptr, FALSE));
    QString text = QString::fromUtf8(decoded.get());
    if (field.size() > looked)
        text.append(u'\u2026');
    return harmlessLine(text, limits.fieldCharacters);
}

} // namespace vandrel
