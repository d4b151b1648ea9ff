#include "platform/richtext/RtfWriterTables.h"

#include <algorithm>

#include <QTextFrame>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfTokenizer.h"

namespace vandrel {

namespace {

const auto freshHeader = QByteArrayLiteral("\\ansi\\ansicpg1252\\deff0");

// The number of the first word of that name, -1 when there is none.
int numberOf(QByteArrayView octets, QByteArrayView name)
{
    RtfTokenizer tokens(octets);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::Word && token.text == name && token.hasNumber)
            return token.number;
    }
    return -1;
}

QByteArray fontEntry(int number, const QString &family)
{
    QByteArray entry;
    appendRtfWord(entry, "f", number);
    entry += "\\fnil\\fcharset0 ";
    // A semicolon would end the name.
    appendRtfText(entry, QString(family).remove(QLatin1Char(';')));
    return entry + ';';
}

// What the document was loaded with; for a new one, a head whose only font is the document's own.
RtfProloguePointer prologueOf(const QTextDocument &document)
{
    const QVariant kept = document.rootFrame()->frameFormat().property(richtext::Prologue);
    if (const auto loaded = kept.value<RtfProloguePointer>())
        return loaded;
    auto fresh = std::make_shared<RtfPrologue>();
    const QString family = document.defaultFont().family();
    fresh->header = freshHeader;
    fresh->fonts.append({0, 0, family, fontEntry(0, family)});
    return fresh;
}

} // namespace

RtfWriterTables::RtfWriterTables(const QTextDocument &document)
    : m_prologue(prologueOf(document)), m_colours(m_prologue->colours)
{
    m_defaultFont = std::max(numberOf(m_prologue->header, "deff"), 0);
    for (const RtfFont &font : m_prologue->fonts)
        enterLoadedFont(font);
    for (int i = 1; i < m_colours.size(); ++i) {
        if (m_colours[i].isValid() && !m_colourNumbers.contains(m_colours[i].rgb()))
            m_colourNumbers.insert(m_colours[i].rgb(), i);
    }
    RtfKeptWords unused;
    m_styles.read(insideRtfGroup(m_prologue->styleSheet), unused);
}

// An entry without a name is the rest of a damaged one; only its number stays taken.
void RtfWriterTables::enterLoadedFont(const RtfFont &font)
{
    m_highestFont = std::max(m_highestFont, font.index);
    if (font.name.isEmpty())
        return;
    m_fonts.append(font);
    if (!m_fontNumbers.contains(font.name))
        m_fontNumbers.insert(font.name, font.index);
}

int RtfWriterTables::font(const QString &family)
{
    const auto known = m_fontNumbers.constFind(family);
    if (known != m_fontNumbers.constEnd())
        return *known;
    const int number = ++m_highestFont;
    m_fonts.append({number, 0, family, fontEntry(number, family)});
    m_fontNumbers.insert(family, number);
    return number;
}

bool RtfWriterTables::hasDefaultFont() const
{
    return std::any_of(m_fonts.begin(), m_fonts.end(),
                       [this](const RtfFont &font) { return font.index == m_defaultFont; });
}

int RtfWriterTables::colour(const QColor &colour)
{
    const auto known = m_colourNumbers.constFind(colour.rgb());
    return known != m_colourNumbers.constEnd() ? *known : enterColour(colour);
}

int RtfWriterTables::automaticColour()
{
    const auto automatic = std::find_if_not(m_colours.begin(), m_colours.end(),
                                            [](const QColor &entry) { return entry.isValid(); });
    return automatic != m_colours.end() ? static_cast<int>(automatic - m_colours.begin()) : enterColour({});
}

int RtfWriterTables::enterColour(const QColor &colour)
{
    // The first entry of a fresh table is the automatic colour, as every reader expects.
    if (m_colours.isEmpty() && colour.isValid())
        m_colours.append(QColor());
    const int number = static_cast<int>(m_colours.size());
    m_colours.append(colour);
    if (colour.isValid())
        m_colourNumbers.insert(colour.rgb(), number);
    return number;
}

void RtfWriterTables::writeFonts(RtfOutput &output) const
{
    if (m_fonts.isEmpty())
        return;
    output << "{\\fonttbl";
    for (const RtfFont &font : m_fonts)
        output << "{" << font.raw << "}";
    output << "}\n";
}

void RtfWriterTables::writeColours(RtfOutput &output) const
{
    if (m_colours.isEmpty())
        return;
    QByteArray table("{\\colortbl ");
    for (const QColor &colour : m_colours) {
        if (colour.isValid()) {
            appendRtfWord(table, "red", colour.red());
            appendRtfWord(table, "green", colour.green());
            appendRtfWord(table, "blue", colour.blue());
        }
        table += ';';
    }
    output << table << "}\n";
}

void RtfWriterTables::write(RtfOutput &output) const
{
    output << m_prologue->header << "\n";
    writeFonts(output);
    writeColours(output);
    if (!m_prologue->styleSheet.isEmpty())
        output << m_prologue->styleSheet << "\n";
}

} // namespace vandrel
