#include "platform/mail/text/MailBody.h"

#include <algorithm>
#include <array>
#include <utility>

#include <QIODevice>

#include "platform/mail/mime/MimeLibrary.h"
#include "platform/mail/mime/MimeObject.h"
#include "platform/mail/text/Base64Count.h"

namespace vandrel {

namespace {

// A stop is noticed between two pieces.
constexpr qsizetype pieceSize = 128 * 1024;

GMimeContentEncoding encodingOf(const QByteArray &name)
{
    return g_mime_content_encoding_from_string(name.constData());
}

bool isEncoded(GMimeContentEncoding encoding)
{
    return encoding == GMIME_CONTENT_ENCODING_BASE64 || encoding == GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE
        || encoding == GMIME_CONTENT_ENCODING_UUENCODE;
}

bool mayStandInBase64(char octet)
{
    return isDigitOfBase64(octet) || octet == '=' || octet == '\r' || octet == '\n';
}

// True when there are blanks within lines.
bool hasWords(const QByteArray &text)
{
    const auto inside
        = [](char blank, char next) { return blank == ' ' && next != ' ' && next != '\r' && next != '\n'; };
    return std::adjacent_find(text.begin(), text.end(), inside) != text.end();
}

struct ByteOrderMark {
    QByteArrayView octets;
    const char *charset;
};

const ByteOrderMark *markOf(QByteArrayView octets)
{
    static const std::array marks{ByteOrderMark{QByteArrayView("\xEF\xBB\xBF", 3), "utf-8"},
                                  ByteOrderMark{QByteArrayView("\xFF\xFE", 2), "utf-16le"},
                                  ByteOrderMark{QByteArrayView("\xFE\xFF", 2), "utf-16be"}};
    const auto found = std::find_if(marks.begin(), marks.end(), [octets](const ByteOrderMark &mark) {
        return octets.startsWith(mark.octets);
    });
    return found != marks.end() ? &*found : nullptr;
}

} // namespace

/// The library's decoder of one transfer encoding.
class MailOctets::Decoder
{
public:
    explicit Decoder(GMimeContentEncoding encoding) : m_filter(g_mime_filter_basic_new(encoding, FALSE)) { }

    QByteArrayView decode(QByteArrayView octets) { return step(g_mime_filter_filter, octets); }

    /// What is left when there is no more.
    QByteArrayView finish() { return step(g_mime_filter_complete, missingPadding()); }

private:
    using Step = decltype(g_mime_filter_filter);

    QByteArrayView step(Step *function, QByteArrayView octets)
    {
        // The library's interface lacks a const that its promise has.
        char *const in = const_cast<char *>(octets.data()); // NOLINT(cppcoreguidelines-pro-type-const-cast)
        char *out = nullptr;
        std::size_t outSize = 0;
        std::size_t outRoom = 0;
        function(m_filter.get(), in, static_cast<std::size_t>(octets.size()), 0, &out, &outSize, &outRoom);
        return {out, static_cast<qsizetype>(outSize)};
    }

    // What a body lacks that ends within a group of base64; the library would forget the octets of that group.
    QByteArrayView missingPadding() const
    {
        const GMimeEncoding &encoder = GMIME_FILTER_BASIC(m_filter.get())->encoder;
        if (encoder.encoding != GMIME_CONTENT_ENCODING_BASE64)
            return {};
        if (encoder.state == 2)
            return "==";
        return encoder.state == 3 ? QByteArrayView("=") : QByteArrayView();
    }

    MimeObject<GMimeFilter> m_filter;
};

MailOctets::MailOctets(QIODevice &message, const MailPart &part, std::stop_token stop)
    : m_message(message), m_stop(std::move(stop)), m_at(part.begin), m_end(part.end)
{
    ensureMimeLibrary();
    const GMimeContentEncoding encoding = encodingOf(part.content.encoding);
    if (!isEncoded(encoding))
        return;
    const bool doubtful = encoding == GMIME_CONTENT_ENCODING_BASE64;
    if (doubtful && !looksLikeBase64())
        return;
    m_decoder = std::make_unique<Decoder>(encoding);
    m_ofBase64 = doubtful;
}

MailOctets::~MailOctets() = default;

QByteArrayView MailOctets::next()
{
    while (!m_finished && !m_stop.stop_requested()) {
        const QByteArrayView raw = read();
        m_finished = raw.isEmpty();
        const QByteArrayView octets = decoded(raw);
        if (!octets.isEmpty())
            return octets;
    }
    return {};
}

QByteArrayView MailOctets::nextRaw()
{
    return m_stop.stop_requested() ? QByteArrayView() : read();
}

QByteArrayView MailOctets::decoded(QByteArrayView raw)
{
    if (!m_decoder)
        return raw;
    return m_finished ? m_decoder->finish() : m_decoder->decode(raw);
}

QByteArrayView MailOctets::read()
{
    m_buffer.resize(std::min<qint64>(pieceSize, m_end - m_at));
    if (m_buffer.isEmpty() || !m_message.seek(m_at))
        return {};
    const qint64 got = std::max<qint64>(0, m_message.read(m_buffer.data(), m_buffer.size()));
    m_at += got;
    return QByteArrayView(m_buffer).first(got);
}

// Some mails call base64 what is plain text. Text has blanks within its lines; and decoding what is no base64
// would leave nothing of it.
bool MailOctets::looksLikeBase64()
{
    constexpr qsizetype sampleSize = 4096;
    constexpr qsizetype tolerated = 20; // one foreign octet in so many, and one more
    const qint64 begin = m_at;
    const QByteArrayView sample = read();
    const QByteArray looked = sample.first(std::min(sample.size(), sampleSize)).toByteArray().trimmed();
    m_at = begin;
    const auto foreign = looked.size() - std::count_if(looked.begin(), looked.end(), mayStandInBase64);
    return !hasWords(looked) && foreign * tolerated <= looked.size() + tolerated;
}

MailCharacters::MailCharacters(QIODevice &message,
                               const MailPart &part,
                               QByteArray charset,
                               const std::stop_token &stop)
    : m_octets(message, part, stop), m_charsetName(std::move(charset))
{ }

QString MailCharacters::next()
{
    for (;;) {
        const QByteArrayView octets = m_octets.next();
        const QString text = octets.isEmpty() && m_charset ? m_charset->finish() : decode(octets);
        if (!text.isEmpty() || octets.isEmpty())
            return text;
    }
}

QString MailCharacters::decode(QByteArrayView octets)
{
    if (m_charset)
        return m_charset->decode(octets);
    if (octets.isEmpty())
        return {};
    const ByteOrderMark *const mark = markOf(octets);
    m_charset.emplace(mark ? QByteArray(mark->charset) : m_charsetName);
    return m_charset->decode(mark ? octets.sliced(mark->octets.size()) : octets);
}

qint64 decodedSize(QIODevice &message, const MailPart &part, const std::stop_token &stop)
{
    MailOctets octets(message, part, stop);
    if (octets.areAsTheyAre())
        return octets.left();
    qint64 size = 0;
    if (octets.isOfBase64()) {
        if (part.base64Octets)
            return *part.base64Octets;
        Base64Count count;
        for (QByteArrayView piece = octets.nextRaw(); !piece.isEmpty(); piece = octets.nextRaw())
            count.add(piece);
        return count.size();
    }
    for (QByteArrayView piece = octets.next(); !piece.isEmpty(); piece = octets.next())
        size += piece.size();
    return size;
}

} // namespace vandrel
