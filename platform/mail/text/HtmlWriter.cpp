#include "platform/mail/text/HtmlWriter.h"

#include <algorithm>
#include <array>
#include <limits>
#include <utility>

#include <QHash>

#include "platform/mail/text/Harmless.h"

namespace vandrel {

namespace {

constexpr char16_t noBreakSpace = 0xA0;
constexpr qsizetype longestAddress = 2000;
// Deeper quotations and lists are not set in any further.
constexpr int deepestIndent = 20;
constexpr int mostBreaks = 3;
constexpr QStringView rule = u"----------";

bool isSpace(QChar character)
{
    return character == u' ' || character == u'\t' || character == u'\n' || character == u'\r'
        || character == u'\f';
}

// What fills a place without being seen.
bool isFiller(QChar character)
{
    switch (character.unicode()) {
    case noBreakSpace:
    case 0x00AD:
    case 0x034F:
    case 0x200B:
    case 0x200C:
    case 0x200D:
    case 0xFEFF:
        return true;
    default:
        return false;
    }
}

// The address of a link that leads anywhere; empty for places within the document, scripts and files.
QString usefulAddress(const QString &given)
{
    static constexpr std::array schemes{u"http://", u"https://", u"ftp://", u"mailto:", u"tel:", u"sms:"};
    const QString address = harmlessLine(given, longestAddress);
    const bool leads = std::any_of(schemes.begin(), schemes.end(), [&address](const char16_t *scheme) {
        return address.startsWith(QStringView(scheme), Qt::CaseInsensitive);
    });
    if (!leads)
        return {};
    constexpr QStringView mail = u"mailto:";
    return address.startsWith(mail, Qt::CaseInsensitive) ? address.sliced(mail.size()) : address;
}

// An address as people write it in a text.
QStringView spoken(QStringView address)
{
    for (const QStringView start :
         {QStringView(u"http://"), QStringView(u"https://"), QStringView(u"www.")}) {
        if (address.startsWith(start, Qt::CaseInsensitive))
            address = address.sliced(start.size());
    }
    if (address.endsWith(u'/'))
        address.chop(1);
    return address;
}

bool isSame(QStringView text, QStringView address)
{
    return spoken(text).compare(spoken(address), Qt::CaseInsensitive) == 0;
}

bool hides(const char *style)
{
    constexpr qsizetype looked = 4096;
    QByteArray rules = QByteArray(style).left(looked).toLower();
    rules.removeIf(
        [](char octet) { return octet == ' ' || octet == '\n' || octet == '\r' || octet == '\t'; });
    return rules.contains("display:none");
}

} // namespace

void HtmlAttributes::set(QByteArrayView name, const char *value)
{
    if (name == "href")
        address = QString::fromUtf8(value);
    else if (name == "alt")
        description = QString::fromUtf8(value);
    else if (name == "start")
        start = QByteArray(value).toInt();
    else if (name == "hidden" || (name == "style" && hides(value)))
        hidden = true;
}

HtmlWriter::Kind HtmlWriter::kindOf(const QByteArray &name)
{
    static const QHash<QByteArray, Kind> kinds{
        {"address", Kind::Block},
        {"article", Kind::Block},
        {"aside", Kind::Block},
        {"caption", Kind::Block},
        {"center", Kind::Block},
        {"dd", Kind::Block},
        {"details", Kind::Block},
        {"dir", Kind::Bullets},
        {"div", Kind::Block},
        {"dl", Kind::Block},
        {"dt", Kind::Block},
        {"fieldset", Kind::Block},
        {"figcaption", Kind::Block},
        {"figure", Kind::Block},
        {"footer", Kind::Block},
        {"form", Kind::Block},
        {"header", Kind::Block},
        {"legend", Kind::Block},
        {"main", Kind::Block},
        {"nav", Kind::Block},
        {"section", Kind::Block},
        {"summary", Kind::Block},
        {"table", Kind::Block},
        {"body", Kind::Block},
        {"h1", Kind::Paragraph},
        {"h2", Kind::Paragraph},
        {"h3", Kind::Paragraph},
        {"h4", Kind::Paragraph},
        {"h5", Kind::Paragraph},
        {"h6", Kind::Paragraph},
        {"p", Kind::Paragraph},
        {"blockquote", Kind::Quotation},
        {"ul", Kind::Bullets},
        {"menu", Kind::Bullets},
        {"ol", Kind::Numbers},
        {"li", Kind::Item},
        {"tr", Kind::Row},
        {"td", Kind::Cell},
        {"th", Kind::Cell},
        {"pre", Kind::Preformatted},
        {"textarea", Kind::Preformatted},
        {"xmp", Kind::Preformatted},
        {"listing", Kind::Preformatted},
        {"br", Kind::Break},
        {"hr", Kind::Rule},
        {"a", Kind::Link},
        {"img", Kind::Picture},
        {"title", Kind::Left},
        {"style", Kind::Left},
        {"script", Kind::Left},
        {"template", Kind::Left},
        {"svg", Kind::Left},
        {"select", Kind::Left},
        {"datalist", Kind::Left},
        {"xml", Kind::Left},
    };
    return kinds.value(name, Kind::Inline);
}

void HtmlWriter::startElement(const QByteArray &name, const HtmlAttributes &attributes)
{
    Element element;
    element.kind = attributes.hidden ? Kind::Left : kindOf(name);
    if (m_left > 0 || element.kind == Kind::Left) {
        ++m_left;
        return;
    }
    open(element, attributes);
    m_open.push_back(std::move(element));
}

void HtmlWriter::endElement()
{
    if (m_left > 0) {
        --m_left;
        return;
    }
    if (m_open.empty())
        return;
    const Element element = std::move(m_open.back());
    m_open.pop_back();
    close(element);
}

void HtmlWriter::open(Element &element, const HtmlAttributes &attributes)
{
    switch (element.kind) {
    case Kind::Block:
        breakLine(1);
        break;
    case Kind::Paragraph:
        breakLine(2);
        break;
    case Kind::Quotation:
        breakLine(1);
        ++m_quotations;
        break;
    case Kind::Bullets:
    case Kind::Numbers:
        breakLine(m_lists.empty() ? 2 : 1);
        m_lists.push_back({element.kind == Kind::Numbers, attributes.start});
        break;
    case Kind::Item:
        startItem();
        break;
    case Kind::Row:
        breakLine(1);
        m_rows.push_back({});
        break;
    case Kind::Cell:
        startCell();
        break;
    case Kind::Preformatted:
        breakLine(1);
        ++m_preformatted;
        m_fresh = true;
        break;
    case Kind::Break:
        breakAgain();
        break;
    case Kind::Rule:
        breakLine(1);
        write(rule);
        breakLine(1);
        break;
    case Kind::Link:
        m_linkText.clear();
        m_inLink = true;
        element.address = usefulAddress(attributes.address);
        break;
    case Kind::Picture:
        addPicture(attributes.description);
        break;
    case Kind::Inline:
    case Kind::Left:
        break;
    }
}

void HtmlWriter::close(const Element &element)
{
    switch (element.kind) {
    case Kind::Block:
        breakLine(1);
        break;
    case Kind::Paragraph:
        breakLine(2);
        break;
    case Kind::Quotation:
        breakLine(1);
        --m_quotations;
        break;
    case Kind::Bullets:
    case Kind::Numbers:
        m_lists.pop_back();
        breakLine(m_lists.empty() ? 2 : 1);
        break;
    case Kind::Item:
        m_marker.clear();
        m_fresh = false;
        breakLine(1);
        break;
    case Kind::Row:
        endRow();
        break;
    case Kind::Cell:
        m_fresh = false;
        break;
    case Kind::Preformatted:
        m_fresh = false;
        --m_preformatted;
        breakLine(1);
        break;
    case Kind::Link:
        closeLink(element);
        break;
    case Kind::Break:
    case Kind::Rule:
    case Kind::Picture:
    case Kind::Inline:
    case Kind::Left:
        break;
    }
}

void HtmlWriter::startItem()
{
    m_fresh = false;
    breakLine(1);
    const bool numbered = !m_lists.empty() && m_lists.back().numbered;
    m_marker = numbered ? QStringLiteral("%1. ").arg(m_lists.back().next) : QStringLiteral("* ");
    if (numbered && m_lists.back().next < std::numeric_limits<int>::max())
        ++m_lists.back().next;
    m_fresh = true;
}

// A cell goes on in the line of the one before it.
void HtmlWriter::startCell()
{
    if (!m_rows.empty()) {
        ++m_rows.back().cells;
        if (m_rows.back().filled) {
            m_breaks = 0;
            m_cell = true;
        }
    }
    m_fresh = true;
}

void HtmlWriter::endRow()
{
    const Row row = m_rows.back();
    m_rows.pop_back();
    if (row.filled && !m_rows.empty())
        m_rows.back().filled = true;
    // The lines of a table stand closer than its cells' paragraphs would; a single cell is there for the layout.
    if (row.cells > 1)
        m_breaks = std::min(m_breaks, 1);
    m_cell = false;
    m_fresh = false;
    breakLine(1);
}

// Says where the link leads, unless its text does already.
void HtmlWriter::closeLink(const Element &link)
{
    m_inLink = false;
    if (link.address.isEmpty() || isSame(m_linkText, link.address))
        return;
    // The address belongs to the text, in whatever blocks that was.
    const int breaks = m_linkText.isEmpty() ? m_breaks : std::exchange(m_breaks, 0);
    m_space = true;
    write(QStringLiteral("(%1)").arg(link.address));
    m_breaks = m_linkText.isEmpty() ? 0 : breaks;
}

void HtmlWriter::addPicture(const QString &description)
{
    const QString line = harmlessLine(description, longestAddress);
    if (!line.isEmpty())
        write(QStringLiteral("[%1]").arg(line));
}

void HtmlWriter::addText(const QString &text)
{
    if (m_left > 0)
        return;
    if (m_preformatted > 0)
        addPreformatted(text);
    else
        addCollapsed(text);
}

void HtmlWriter::addPreformatted(QStringView text)
{
    while (!text.isEmpty()) {
        const qsizetype end = text.indexOf(u'\n');
        QStringView line = end < 0 ? text : text.first(end);
        if (line.endsWith(u'\r'))
            line.chop(1);
        if (!line.isEmpty())
            write(line);
        if (end < 0)
            return;
        if (!m_fresh)
            ++m_breaks;
        text = text.sliced(end + 1);
    }
}

void HtmlWriter::addCollapsed(QStringView text)
{
    while (!text.isEmpty()) {
        const auto wordEnd = std::find_if(text.begin(), text.end(), isSpace);
        const QStringView word = text.first(wordEnd - text.begin());
        if (!word.isEmpty())
            addWord(word);
        const auto spaceEnd = std::find_if_not(wordEnd, text.end(), isSpace);
        if (spaceEnd != wordEnd)
            m_space = true;
        text = text.sliced(spaceEnd - text.begin());
    }
}

void HtmlWriter::addWord(QStringView word)
{
    if (!std::all_of(word.begin(), word.end(), isFiller)) {
        QString shown = word.toString();
        write(shown.replace(QChar(noBreakSpace), u' '));
    } else if (m_breaks == 1) {
        // A line that holds nothing else stands for a blank one.
        breakAgain();
    } else if (m_breaks == 0) {
        m_space = true;
    }
}

void HtmlWriter::write(QStringView text)
{
    if (m_breaks > 0 || !m_written)
        beginLine();
    else if (m_cell)
        m_out.add(u"\t");
    else if (m_space && !m_fresh)
        m_out.add(u" ");
    m_out.add(m_marker);
    m_out.add(text);
    if (m_inLink && m_linkText.size() <= longestAddress) {
        if (m_space && !m_linkText.isEmpty())
            m_linkText.append(u' ');
        m_linkText.append(text);
    }
    m_marker.clear();
    m_written = true;
    m_space = false;
    m_cell = false;
    m_fresh = false;
    if (!m_rows.empty())
        m_rows.back().filled = true;
}

void HtmlWriter::beginLine()
{
    if (m_written) {
        for (; m_breaks > 0; --m_breaks)
            m_out.add(u"\n");
    }
    m_breaks = 0;
    m_out.add(QStringLiteral("> ").repeated(std::min(m_quotations, deepestIndent)));
    const auto depth = std::min(static_cast<int>(m_lists.size()), deepestIndent);
    const int furtherLine = depth > 0 && m_marker.isEmpty() ? 1 : 0;
    m_out.add(QStringLiteral("  ").repeated(depth + furtherLine));
}

// The end of a block; at the beginning of a cell or an item there is nothing to be ended.
void HtmlWriter::breakLine(int count)
{
    if (m_fresh)
        return;
    m_breaks = std::max(m_breaks, count);
    m_space = false;
    m_cell = false;
}

void HtmlWriter::breakAgain()
{
    if (m_fresh)
        return;
    m_breaks = std::max(m_breaks, std::min(m_breaks + 1, mostBreaks));
    m_space = false;
}

void HtmlWriter::finish()
{
    m_out.startLine();
}

} // namespace vandrel
