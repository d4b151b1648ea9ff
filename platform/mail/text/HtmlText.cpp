#include "platform/mail/text/HtmlText.h"

#include <algorithm>
#include <memory>
#include <mutex>
#include <utility>

#include <libxml/HTMLparser.h>

#include <QRegularExpression>

#include "platform/mail/text/HtmlWriter.h"

namespace vandrel {

namespace {

// So many open elements may be looked through for each of the octets allowed.
constexpr qint64 openElements = 128;

// The parser would wrap a text that no body holds into a paragraph; where the document begins one of its own, it is
// one body still.
constexpr auto beginning = "<html><body>";

QString forParser(QString html)
{
    // The parser ends its document at a NUL, and takes the conditions that office programs write for text.
    html.replace(QChar::Null, QChar::ReplacementCharacter);
    if (html.contains(u"<!["))
        html.remove(QRegularExpression(QStringLiteral("<!\\[[^\\]<>]{0,200}\\]>")));
    return html;
}

struct FreeContext {
    void operator()(htmlParserCtxt *context) const { htmlFreeParserCtxt(context); }
};

// Hands the document to the parser, and the parser's events to the writer.
class HtmlReader
{
public:
    HtmlReader(MailCharacters &html, ReadableText &out, qint64 limit, std::stop_token stop)
        : m_html(html), m_writer(out), m_left(limit), m_work(limit * openElements), m_stop(std::move(stop))
    { }

    bool read()
    {
        static std::once_flag started;
        std::call_once(started, xmlInitParser);
        const std::unique_ptr<htmlParserCtxt, FreeContext> context(htmlNewParserCtxt());
        if (!context)
            return false;
        *context->sax = events();
        context->userData = this;
        constexpr int options = HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING
            | HTML_PARSE_NONET | HTML_PARSE_NOIMPLIED | HTML_PARSE_IGNORE_ENC;
        xmlFreeDoc(
            htmlCtxtReadIO(context.get(), &HtmlReader::readMore, nullptr, this, nullptr, "UTF-8", options));
        m_writer.finish();
        return !m_cut;
    }

private:
    static htmlSAXHandler events()
    {
        htmlSAXHandler handler = {};
        handler.startElement = [](void *self, const xmlChar *name, const xmlChar **attributes) {
            static_cast<HtmlReader *>(self)->startElement(name, attributes);
        };
        handler.endElement
            = [](void *self, const xmlChar *) { static_cast<HtmlReader *>(self)->endElement(); };
        handler.characters = [](void *self, const xmlChar *text, int length) {
            static_cast<HtmlReader *>(self)->m_writer.addText(QString::fromUtf8(asChars(text), length));
        };
        handler.ignorableWhitespace = handler.characters;
        return handler;
    }

    static const char *asChars(const xmlChar *text) { return reinterpret_cast<const char *>(text); }

    void startElement(const xmlChar *name, const xmlChar **attributes)
    {
        ++m_depth;
        HtmlAttributes given;
        for (const xmlChar **each = attributes; each && each[0]; each += 2)
            given.set(asChars(each[0]), each[1] ? asChars(each[1]) : "");
        m_writer.startElement(QByteArray(asChars(name)), given);
    }

    void endElement()
    {
        --m_depth;
        m_writer.endElement();
    }

    static int readMore(void *self, char *buffer, int size)
    {
        return static_cast<HtmlReader *>(self)->readMore(buffer, size);
    }

    int readMore(char *buffer, int size)
    {
        if (m_ready.isEmpty() && !m_stop.stop_requested()) {
            m_octets = forParser(m_html.next()).toUtf8();
            m_ready = m_octets;
        }
        m_cut = !m_ready.isEmpty() && (m_left <= 0 || m_work <= 0);
        if (m_cut || m_stop.stop_requested())
            return 0;
        const auto given = std::min<qsizetype>({size, m_ready.size(), static_cast<qsizetype>(m_left)});
        std::copy_n(m_ready.begin(), given, buffer);
        m_ready = m_ready.sliced(given);
        m_left -= given;
        m_work -= given * std::max<qint64>(1, m_depth);
        return static_cast<int>(given);
    }

    MailCharacters &m_html;
    HtmlWriter m_writer;
    qint64 m_left;
    qint64 m_work; // octets times open elements
    std::stop_token m_stop;
    QByteArray m_octets{beginning};
    QByteArrayView m_ready{m_octets};
    qint64 m_depth = 0;
    bool m_cut = false;
};

} // namespace

bool writeHtmlText(MailCharacters &html, ReadableText &out, qint64 limit, const std::stop_token &stop)
{
    return HtmlReader(html, out, limit, stop).read();
}

} // namespace vandrel
