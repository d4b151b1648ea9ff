#include "platform/richtext/RtfWriterFields.h"

#include <algorithm>

#include <QVariant>

#include "controls/RichTextDocument.h"

namespace vandrel {

namespace {

// Quotes and backslashes are escaped twice: for the field's own grammar, and for RTF.
QByteArray linkInstruction(const QString &address)
{
    QString quoted = address;
    quoted.replace(QLatin1Char('\\'), QLatin1String("\\\\")).replace(QLatin1Char('"'), QLatin1String("\\\""));
    QByteArray instruction("{\\*\\fldinst{HYPERLINK ");
    if (address.startsWith(QLatin1Char('#'))) {
        instruction += "\\\\l ";
        quoted.remove(0, 1);
    }
    instruction += '"';
    appendRtfText(instruction, quoted);
    return instruction + "\"}}";
}

} // namespace

RtfWriterFields::Chain RtfWriterFields::chainOf(const QTextCharFormat &format)
{
    Chain chain;
    const QVariantList outer = format.property(richtext::OuterFields).toList();
    for (qsizetype i = 0; i + 1 < outer.size(); i += 2)
        chain.append({outer[i].toInt(), outer[i + 1].toByteArray()});
    const int id = format.intProperty(richtext::FieldId);
    if (id != 0)
        chain.append({id, format.property(richtext::FieldInstruction).toByteArray()});
    else if (format.isAnchor() && !format.anchorHref().isEmpty())
        chain.append({0, linkInstruction(format.anchorHref())});
    return chain;
}

qsizetype RtfWriterFields::commonWith(const Chain &chain) const
{
    const auto different = std::mismatch(m_open.begin(), m_open.end(), chain.begin(), chain.end());
    return different.first - m_open.begin();
}

bool RtfWriterFields::endParagraph(const Chain &end, const Chain &next, RtfOutput &output)
{
    return closeDownTo(std::max(commonWith(end), commonWith(next)), output);
}

bool RtfWriterFields::closeDownTo(qsizetype count, RtfOutput &output)
{
    const bool crossed = m_crossed > count;
    for (; m_open.size() > count; m_open.removeLast())
        output << "}}";
    m_crossed = std::min(m_crossed, count);
    return crossed;
}

bool RtfWriterFields::moveTo(const Chain &chain, RtfOutput &output)
{
    const bool crossed = closeDownTo(commonWith(chain), output);
    while (m_open.size() < chain.size()) {
        const Field &field = chain[m_open.size()];
        output << "{\\field" << field.instruction << "{\\fldrslt ";
        m_open.append(field);
    }
    return crossed;
}

} // namespace vandrel
