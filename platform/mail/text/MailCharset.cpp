#include "platform/mail/text/MailCharset.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <QList>
#include <QSysInfo>

#include <gmime/gmime.h>

#include "platform/mail/mime/MimeLibrary.h"

namespace vandrel {

namespace {

const auto noConverter = reinterpret_cast<iconv_t>(-1);

// What Windows-1252 has where ISO-8859-1 has control characters; its five gaps stay what they are.
constexpr std::array<char16_t, 32> westernSpecials{
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The octets that the character begun by `lead` takes; 0 for an octet that begins none.
int lengthOfSequence(unsigned char lead)
{
    if (lead < 0x80)
        return 1;
    if (lead >= 0xC2 && lead <= 0xDF)
        return 2;
    if (lead >= 0xE0 && lead <= 0xEF)
        return 3;
    return lead >= 0xF0 && lead <= 0xF4 ? 4 : 0;
}

bool isValid(QByteArrayView octets)
{
    return QUtf8StringView(octets.data(), octets.size()).isValidUtf8();
}

bool continues(char octet)
{
    return (static_cast<unsigned char>(octet) & 0xC0U) == 0x80U;
}

// True when `octets` may be the beginning of a character whose end is not there yet.
bool isCutOff(QByteArrayView octets)
{
    const int length = lengthOfSequence(static_cast<unsigned char>(octets.front()));
    return length > octets.size() && std::all_of(octets.begin() + 1, octets.end(), continues);
}

// The longest beginning of `octets` that does not cut a character off.
qsizetype wholeCharacters(QByteArrayView octets)
{
    constexpr qsizetype longest = 4;
    for (qsizetype back = 1; back < longest && back <= octets.size(); ++back) {
        const QByteArrayView tail = octets.last(back);
        if (!continues(tail.front()))
            return isCutOff(tail) ? octets.size() - back : octets.size();
    }
    return octets.size();
}

qsizetype lengthOfCharacterAt(QByteArrayView octets)
{
    const int length = lengthOfSequence(static_cast<unsigned char>(octets.front()));
    if (length == 1)
        return 1;
    return length > 0 && length <= octets.size() && isValid(octets.first(length)) ? length : 0;
}

// Runs of whole UTF-8 characters, and between them single octets of Windows-1252.
QString decodeMixed(QByteArrayView octets)
{
    QString text;
    text.reserve(octets.size());
    while (!octets.isEmpty()) {
        qsizetype run = 0;
        while (run < octets.size()) {
            const qsizetype length = lengthOfCharacterAt(octets.sliced(run));
            if (length == 0)
                break;
            run += length;
        }
        text.append(QString::fromUtf8(octets.first(run)));
        octets = octets.sliced(run);
        if (!octets.isEmpty()) {
            text.append(westernCharacter(octets.front()));
            octets = octets.sliced(1);
        }
    }
    return text;
}

// A name goes to the system's converter, which would take suffixes of its own ("//IGNORE").
bool isPlainName(const QByteArray &name)
{
    constexpr qsizetype longestName = 60;
    return !name.isEmpty() && name.size() <= longestName
        && std::all_of(name.begin(), name.end(), [](char octet) {
               return (octet >= 'a' && octet <= 'z') || (octet >= '0' && octet <= '9') || octet == '-'
                   || octet == '_' || octet == '.' || octet == ':';
           });
}

bool isUndeclared(const QByteArray &name)
{
    static const QList<QByteArray> names{"utf-8",        "utf8",      "us-ascii", "ascii", "ansi_x3.4-1968",
                                         "unknown-8bit", "x-unknown", "default",  "binary"};
    return !isPlainName(name) || names.contains(name);
}

QByteArray meantName(const QByteArray &name)
{
    return name == "iso-8859-1" || name == "latin1" || name == "iso8859-1" ? QByteArrayLiteral("windows-1252")
                                                                           : name;
}

} // namespace

/// The system's converter.
class MailCharset::Converter
{
public:
    explicit Converter(const QByteArray &name)
    {
        ensureMimeLibrary();
        const bool bigEndian = QSysInfo::ByteOrder == QSysInfo::BigEndian;
        m_handle = g_mime_iconv_open(bigEndian ? "UTF-16BE" : "UTF-16LE", name.constData());
    }
    ~Converter()
    {
        if (isOpen())
            g_mime_iconv_close(m_handle);
    }
    Converter(const Converter &) = delete;
    Converter &operator=(const Converter &) = delete;

    bool isOpen() const { return m_handle != noConverter; }

    /// Appends what `octets` stand for, and returns how many of them, at the end, are the cut-off beginning of a
    /// character.
    qsizetype decode(QByteArrayView octets, QString &text)
    {
        // The converter's interface lacks a const that its promise has.
        char *in = const_cast<char *>(octets.data()); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        auto left = static_cast<std::size_t>(octets.size());
        while (left > 0) {
            char *out = reinterpret_cast<char *>(m_buffer.data());
            std::size_t room = sizeof(m_buffer);
            const bool failed
                = g_mime_iconv(m_handle, &in, &left, &out, &room) == static_cast<std::size_t>(-1);
            const int reason = failed ? errno : 0;
            text.append(QStringView(m_buffer.data(), used(room)));
            if (reason == EINVAL)
                break;
            if (reason == EILSEQ) {
                text.append(QChar::ReplacementCharacter);
                ++in;
                --left;
            }
        }
        return static_cast<qsizetype>(left);
    }

    /// Appends a character that the converter keeps until it knows what follows it.
    void finish(QString &text)
    {
        char *out = reinterpret_cast<char *>(m_buffer.data());
        std::size_t room = sizeof(m_buffer);
        g_mime_iconv(m_handle, nullptr, nullptr, &out, &room);
        text.append(QStringView(m_buffer.data(), used(room)));
    }

private:
    qsizetype used(std::size_t room) const
    {
        return static_cast<qsizetype>((sizeof(m_buffer) - room) / sizeof(char16_t));
    }

    iconv_t m_handle;
    std::array<char16_t, 16 * 1024> m_buffer;
};

MailCharset::MailCharset(const QByteArray &name)
{
    const QByteArray lowered = name.trimmed().toLower();
    if (isUndeclared(lowered))
        return;
    m_converter = std::make_unique<Converter>(meantName(lowered));
    if (!m_converter->isOpen())
        m_converter.reset();
}

MailCharset::~MailCharset() = default;

QString MailCharset::decode(QByteArrayView octets)
{
    QByteArray joined;
    if (!m_waiting.isEmpty()) {
        joined = m_waiting;
        joined.append(octets);
        octets = joined;
    }
    if (!m_converter)
        return decodeUtf8(octets);
    QString text;
    text.reserve(octets.size());
    const qsizetype cutOff = m_converter->decode(octets, text);
    // No character takes this many octets; what stays longer is none.
    constexpr qsizetype longestCharacter = 16;
    m_waiting = cutOff <= longestCharacter ? octets.last(cutOff).toByteArray() : QByteArray();
    return text;
}

QString MailCharset::decodeUtf8(QByteArrayView octets)
{
    const qsizetype whole = wholeCharacters(octets);
    const QByteArrayView now = octets.first(whole);
    QString text = isValid(now) ? QString::fromUtf8(now) : decodeMixed(now);
    m_waiting = octets.sliced(whole).toByteArray();
    return text;
}

QString MailCharset::finish()
{
    const QByteArray rest = std::exchange(m_waiting, {});
    if (!m_converter)
        return decodeMixed(rest);
    QString text;
    m_converter->finish(text);
    if (!rest.isEmpty())
        text.append(QChar::ReplacementCharacter);
    return text;
}

QChar westernCharacter(char octet)
{
    const auto value = static_cast<unsigned char>(octet);
    const char16_t code = value >= 0x80 && value < 0xA0 ? westernSpecials.at(value - 0x80U) : value;
    return code;
}

QString undeclaredText(QByteArrayView octets)
{
    return isValid(octets) ? QString::fromUtf8(octets) : decodeMixed(octets);
}

} // namespace vandrel
