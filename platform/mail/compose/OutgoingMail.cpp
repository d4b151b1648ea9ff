#include "platform/mail/compose/OutgoingMail.h"

#include <algorithm>
#include <memory>

#include "controls/DriveView.h"
#include "platform/mail/compose/AttachmentList.h"
#include "platform/mail/compose/HeaderText.h"
#include "platform/mail/compose/TextPart.h"
#include "platform/mail/mime/MimeLibrary.h"
#include "platform/mail/mime/MimeObject.h"
#include "runtime/Clock.h"
#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

struct OptionsFree {
    void operator()(GMimeFormatOptions *options) const { g_mime_format_options_free(options); }
};

std::unique_ptr<GMimeFormatOptions, OptionsFree> wireFormat()
{
    std::unique_ptr<GMimeFormatOptions, OptionsFree> options(g_mime_format_options_new());
    g_mime_format_options_set_newline_format(options.get(), GMIME_NEWLINE_FORMAT_DOS);
    return options;
}

// The library would fold and encode a value its own way; a raw one goes out as it is.
void setField(GMimeObject *object, const char *name, const QByteArray &value)
{
    GMimeHeaderList *fields = g_mime_object_get_header_list(object);
    g_mime_header_list_set(fields, name, "", "utf-8");
    const QByteArray raw = ' ' + value + "\r\n";
    g_mime_header_set_raw_value(g_mime_header_list_get_header(fields, name), raw.constData());
}

QByteArray headersOf(GMimeObject *object)
{
    const MimeString text(g_mime_object_get_headers(object, wireFormat().get()));
    return QByteArray(text.get());
}

GMimeContentEncoding libraryEncoding(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::QuotedPrintable:
        return GMIME_CONTENT_ENCODING_QUOTEDPRINTABLE;
    case TextEncoding::Base64:
        return GMIME_CONTENT_ENCODING_BASE64;
    case TextEncoding::SevenBit:
        break;
    }
    return GMIME_CONTENT_ENCODING_7BIT;
}

MimeObject<GMimeObject> textPart(const QByteArray &lines)
{
    const MimeObject<GMimeStream> octets(
        g_mime_stream_mem_new_with_buffer(lines.constData(), static_cast<std::size_t>(lines.size())));
    const MimeObject<GMimeDataWrapper> content(
        g_mime_data_wrapper_new_with_stream(octets.get(), GMIME_CONTENT_ENCODING_DEFAULT));
    MimeObject<GMimeObject> part(GMIME_OBJECT(g_mime_text_part_new()));
    g_mime_text_part_set_charset(GMIME_TEXT_PART(part.get()), "utf-8");
    g_mime_part_set_content(GMIME_PART(part.get()), content.get());
    g_mime_part_set_content_encoding(GMIME_PART(part.get()), libraryEncoding(textEncoding(lines)));
    return part;
}

// The part's content as it is encoded, its last line complete.
QByteArray contentOf(GMimeObject *part)
{
    const MimeObject<GMimeStream> octets(g_mime_stream_mem_new());
    g_mime_object_write_content_to_stream(part, wireFormat().get(), octets.get());
    const GByteArray *array = g_mime_stream_mem_get_byte_array(GMIME_STREAM_MEM(octets.get()));
    QByteArray content(reinterpret_cast<const char *>(array->data), array->len);
    if (!content.isEmpty() && !content.endsWith("\r\n"))
        content += "\r\n";
    return content;
}

QByteArray attachmentHeader(const Attachment &attachment)
{
    const QByteArrayList type = attachment.mediaType().split('/');
    const MimeObject<GMimeObject> part(
        GMIME_OBJECT(g_mime_part_new_with_type(type[0].constData(), type[1].constData())));
    g_mime_part_set_content_encoding(GMIME_PART(part.get()), GMIME_CONTENT_ENCODING_BASE64);
    setField(part.get(), "Content-Disposition",
             headerWithParameter(QByteArrayLiteral("attachment"), QByteArrayLiteral("filename"),
                                 attachment.name()));
    return headersOf(part.get());
}

GDateTime *currentMoment()
{
    const QDateTime now = Clock::now();
    const std::unique_ptr<GTimeZone, void (*)(GTimeZone *)> zone(g_time_zone_new_offset(now.offsetFromUtc()),
                                                                 &g_time_zone_unref);
    const QDate day = now.date();
    const QTime time = now.time();
    return g_date_time_new(zone.get(), day.year(), day.month(), day.day(), time.hour(), time.minute(),
                           time.second());
}

bool isSameMailbox(const MailAddress &one, const MailAddress &other)
{
    return one.local == other.local && one.domain.compare(other.domain, Qt::CaseInsensitive) == 0;
}

} // namespace

OutgoingMail::OutgoingMail(const MailDraft &draft, const DriveView &drives)
{
    ensureMimeLibrary();
    readAddresses(draft);
    checkHeaderText(draft.subject, QStringLiteral("The subject"));
    for (const QString &path : attachmentPaths(draft.attachments))
        m_attachments.emplace_back(path, drives);
    build(draft);
}

void OutgoingMail::readAddresses(const MailDraft &draft)
{
    const auto read = [](const QString &list, const QString &field) {
        checkHeaderText(list, QStringLiteral("The field %1").arg(field));
        return readMailAddresses(list, field);
    };
    const auto senders = read(draft.from, QStringLiteral("From"));
    if (senders.size() != 1)
        throw RuntimeError(
            error::InvalidProcedureCall,
            senders.empty()
                ? QStringLiteral("The message has no sender. Type your own mail address into From.")
                : QStringLiteral("From names more than one sender. Type only your own mail address."));
    m_sender = senders.front();
    m_to = read(draft.to, QStringLiteral("To"));
    m_cc = read(draft.cc, QStringLiteral("CC"));
    for (const auto *list : {&m_to, &m_cc}) {
        for (const MailAddress &address : *list) {
            const bool known
                = std::any_of(m_recipients.begin(), m_recipients.end(),
                              [&](const MailAddress &other) { return isSameMailbox(address, other); });
            if (!known)
                m_recipients.push_back(address);
        }
    }
    if (m_recipients.empty())
        throw RuntimeError(error::InvalidProcedureCall,
                           QStringLiteral("The message has no recipient. Type a mail address into To."));
}

// The fields of the message itself; those of its content follow from the part that is put into it.
QByteArray OutgoingMail::header(const MailDraft &draft) const
{
    const MimeObject<GMimeObject> message(GMIME_OBJECT(g_mime_message_new(TRUE)));
    GDateTime *const moment = currentMoment();
    g_mime_message_set_date(GMIME_MESSAGE(message.get()), moment);
    g_date_time_unref(moment);
    const MimeString id(g_mime_utils_generate_message_id(m_sender.domain.constData()));
    g_mime_message_set_message_id(GMIME_MESSAGE(message.get()), id.get());
    const auto setAddresses = [&](const QByteArray &name, const std::vector<MailAddress> &addresses) {
        if (!addresses.empty())
            setField(message.get(), name.constData(), headerAddresses(addresses, name.size() + 2));
    };
    setAddresses(QByteArrayLiteral("From"), {m_sender});
    setAddresses(QByteArrayLiteral("To"), m_to);
    setAddresses(QByteArrayLiteral("Cc"), m_cc);
    setField(message.get(), "Subject", headerText(draft.subject, 9));
    setField(message.get(), "MIME-Version", QByteArrayLiteral("1.0"));
    return headersOf(message.get());
}

void OutgoingMail::build(const MailDraft &draft)
{
    const QByteArray fields = header(draft);
    const QByteArray lines = textLines(draft.body);
    const MimeObject<GMimeObject> text = textPart(lines);
    const QByteArray part = headersOf(text.get()) + "\r\n" + contentOf(text.get());
    if (m_attachments.empty())
        m_texts.push_back(fields + part);
    else
        buildParts(fields, part);
    for (const QByteArray &octets : m_texts)
        m_size += octets.size();
    for (const Attachment &attachment : m_attachments)
        m_size += attachment.encodedSize();
}

void OutgoingMail::buildParts(const QByteArray &fields, const QByteArray &text)
{
    const MimeObject<GMimeObject> container(GMIME_OBJECT(g_mime_multipart_new_with_subtype("mixed")));
    const QByteArray delimiter
        = "\r\n--" + QByteArray(g_mime_multipart_get_boundary(GMIME_MULTIPART(container.get())));
    QByteArray before = fields + headersOf(container.get()) + delimiter + "\r\n" + text;
    for (const Attachment &attachment : m_attachments) {
        m_texts.push_back(before + delimiter + "\r\n" + attachmentHeader(attachment) + "\r\n");
        before.clear();
    }
    m_texts.push_back(delimiter + "--\r\n");
}

// Texts and attachments take turns, a text first.
QByteArray OutgoingMail::next()
{
    while (!m_texts.empty()) {
        if (m_textIsNext) {
            m_textIsNext = false;
            const QByteArray text = m_texts.front();
            m_texts.pop_front();
            return text;
        }
        const QByteArray block = m_attachments.front().nextEncoded();
        if (!block.isEmpty())
            return block;
        m_attachments.pop_front();
        m_textIsNext = true;
    }
    return {};
}

} // namespace vandrel
