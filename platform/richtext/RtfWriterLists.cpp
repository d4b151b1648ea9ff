#include "platform/richtext/RtfWriterLists.h"

#include <algorithm>

#include "controls/ListMarker.h"
#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfTokenizer.h"

namespace vandrel {

namespace {

// Between list levels of a new list, and how far its number hangs out, in twips.
constexpr int levelStep = 720;
constexpr int hang = 360;
constexpr int firstListId = 900'000'000;

int highestNumber(QByteArrayView overrides)
{
    int highest = 0;
    RtfTokenizer tokens(overrides);
    for (RtfToken token = tokens.next(); token.type != RtfToken::Type::End; token = tokens.next()) {
        if (token.type == RtfToken::Type::Word && token.text == QByteArrayView("ls"))
            highest = std::max(highest, token.number);
    }
    return highest;
}

int numberKind(QTextListFormat::Style style)
{
    switch (style) {
    case QTextListFormat::ListUpperRoman:
        return 1;
    case QTextListFormat::ListLowerRoman:
        return 2;
    case QTextListFormat::ListUpperAlpha:
        return 3;
    case QTextListFormat::ListLowerAlpha:
        return 4;
    case QTextListFormat::ListStyleUndefined:
        return rtflist::NoNumber;
    default:
        return isBullet(style) ? rtflist::Bullet : 0;
    }
}

// The toolkit writes a full stop where a list says nothing.
QString suffixOf(const QTextListFormat &format)
{
    return format.hasProperty(QTextFormat::ListNumberSuffix) ? format.numberSuffix() : QStringLiteral(".");
}

int startOf(const QTextListFormat &format)
{
    return format.hasProperty(richtext::ListStart) ? format.intProperty(richtext::ListStart) : 1;
}

QByteArray hexOctet(qsizetype value)
{
    return R"(\')" + QByteArray::number(value, 16).rightJustified(2, '0');
}

// The text of a level: its length, then its characters, a number's place being the level's own number.
QByteArray levelText(const QTextListFormat &format, int level)
{
    QByteArray text("{\\leveltext");
    QByteArray places;
    if (isBullet(format.style())) {
        text += hexOctet(1);
        appendRtfText(text, listMarkerText(format, 0));
    } else if (format.style() == QTextListFormat::ListStyleUndefined) {
        text += hexOctet(0);
    } else {
        const QString prefix = format.numberPrefix().left(32);
        const QString suffix = suffixOf(format).left(32);
        text += hexOctet(prefix.size() + 1 + suffix.size());
        appendRtfText(text, prefix);
        text += hexOctet(level);
        appendRtfText(text, suffix);
        places = hexOctet(prefix.size() + 1);
    }
    return text + ";}{\\levelnumbers" + places + ";}";
}

QByteArray listLevel(const QTextListFormat &format, int level)
{
    QByteArray rtf("{\\listlevel");
    appendRtfWord(rtf, "levelnfc", numberKind(format.style()));
    appendRtfWord(rtf, "levelnfcn", numberKind(format.style()));
    rtf += R"(\leveljc0\leveljcn0\levelfollow0)";
    appendRtfWord(rtf, "levelstartat", startOf(format));
    rtf += levelText(format, level);
    appendRtfWord(rtf, "fi", -hang);
    appendRtfWord(rtf, "li", levelStep * (level + 1));
    return rtf + '}';
}

QByteArray listDefinition(const QTextListFormat &format, int id)
{
    QByteArray rtf("{\\list");
    appendRtfWord(rtf, "listtemplateid", id);
    for (int level = 0; level < rtflist::levels; ++level)
        rtf += listLevel(format, level);
    rtf += "{\\listname ;}";
    appendRtfWord(rtf, "listid", id);
    return rtf + '}';
}

QByteArray overrideDefinition(int number, int id)
{
    QByteArray rtf("{\\listoverride");
    appendRtfWord(rtf, "listid", id);
    rtf += "\\listoverridecount0";
    appendRtfWord(rtf, "ls", number);
    return rtf + '}';
}

// Puts a definition behind the others of a table, or begins the table with it.
void appendTo(QByteArray &table, const char *beginning, const QByteArray &definition)
{
    if (table.isEmpty())
        table = QByteArray(beginning) + '}';
    table.insert(table.lastIndexOf('}'), definition);
}

} // namespace

RtfWriterLists::RtfWriterLists(const RtfPrologue &prologue)
    : m_listTable(prologue.listTable), m_overrideTable(prologue.listOverrideTable),
      m_highest(highestNumber(prologue.listOverrideTable))
{
    m_lists.readLists(insideRtfGroup(m_listTable));
    m_lists.readOverrides(insideRtfGroup(m_overrideTable));
}

// A paragraph pasted from another document brings along a number that means something else here, or nothing.
bool RtfWriterLists::isDefined(int number, int level, const QTextListFormat &format) const
{
    const RtfListLevel *definition = number > 0 ? m_lists.level(number, level) : nullptr;
    return definition && definition->style() == format.style() && definition->start == startOf(format);
}

int RtfWriterLists::define(const QTextListFormat &format)
{
    const int number = ++m_highest;
    int id = firstListId + number;
    while (m_listTable.contains("\\listid" + QByteArray::number(id)))
        ++id;
    appendTo(m_listTable, "{\\*\\listtable", listDefinition(format, id));
    appendTo(m_overrideTable, "{\\*\\listoverridetable", overrideDefinition(number, id));
    return number;
}

void RtfWriterLists::enter(const QTextList &list)
{
    if (m_uses.contains(&list))
        return;
    const QTextListFormat format = list.format();
    const int loaded = format.intProperty(richtext::ListOverride);
    const int level = std::clamp(list.item(0).blockFormat().intProperty(richtext::ListLevel), 0, 8);
    m_uses.insert(&list, {isDefined(loaded, level, format) ? loaded : define(format)});
}

QString RtfWriterLists::nextMarker(const QTextBlock &item)
{
    const QTextList &list = *item.textList();
    const QTextListFormat format = list.format();
    Use &use = m_uses[&list];
    // Only what is written of a selection may begin inside a list.
    use.counted = use.counted < 0 ? list.itemNumber(item) : use.counted + 1;
    return listMarkerText(format, use.counted);
}

void RtfWriterLists::writeTables(RtfOutput &output) const
{
    if (!m_listTable.isEmpty())
        output << m_listTable << "\n";
    if (!m_overrideTable.isEmpty())
        output << m_overrideTable << "\n";
}

} // namespace vandrel
