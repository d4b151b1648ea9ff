#include "platform/richtext/RtfFormats.h"

#include <algorithm>

#include <QFont>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfUnits.h"

namespace vandrel {

namespace {

/// Fields within fields are kept that deep.
constexpr qsizetype deepestFields = 16;

/// The format's left and right are those of the page; in a right-to-left paragraph the toolkit must be told so.
Qt::Alignment alignmentOf(const RtfParaState &state)
{
    const Qt::Alignment absolute = state.rightToLeft ? Qt::AlignAbsolute : Qt::Alignment();
    switch (state.alignment) {
    case RtfParaState::AlignRight:
        return Qt::AlignRight | absolute;
    case RtfParaState::AlignCentre:
        return Qt::AlignHCenter;
    case RtfParaState::AlignJustify:
        return Qt::AlignJustify;
    default:
        return Qt::AlignLeft | absolute;
    }
}

QTextOption::TabType tabTypeOf(RtfTab::Type type)
{
    switch (type) {
    case RtfTab::Right:
        return QTextOption::RightTab;
    case RtfTab::Centre:
        return QTextOption::CenterTab;
    case RtfTab::Decimal:
        return QTextOption::DelimiterTab;
    default:
        return QTextOption::LeftTab;
    }
}

void setTabs(QTextBlockFormat &format, const QList<RtfTab> &tabs)
{
    QList<QTextOption::Tab> positions;
    QVariantList leaders;
    for (const RtfTab &tab : tabs) {
        QTextOption::Tab position(exactPixels(tab.position), tabTypeOf(tab.type));
        if (tab.type == RtfTab::Decimal)
            position.delimiter = u'.';
        positions.append(position);
        if (tab.leader != RtfTab::Blank)
            leaders << tab.position << static_cast<int>(tab.leader);
    }
    if (!leaders.isEmpty())
        format.setProperty(richtext::TabLeaders, leaders);
    if (!positions.isEmpty())
        format.setTabPositions(positions);
}

void setLineHeight(QTextBlockFormat &format, const RtfParaState &state)
{
    const int spacing = state.lineSpacing;
    if (spacing == 0)
        return;
    if (state.lineSpacingMultiple)
        format.setLineHeight(std::abs(spacing) / 2.4, QTextBlockFormat::ProportionalHeight);
    else if (spacing > 0)
        format.setLineHeight(exactPixels(spacing), QTextBlockFormat::MinimumHeight);
    else
        format.setLineHeight(exactPixels(-spacing), QTextBlockFormat::FixedHeight);
}

void setMargins(QTextBlockFormat &format, const RtfParaState &state)
{
    format.setLeftMargin(exactPixels(state.left));
    format.setRightMargin(exactPixels(state.right));
    format.setTopMargin(exactPixels(state.before));
    format.setBottomMargin(exactPixels(state.after));
    const bool isListed = state.list > 0 || state.legacyList >= 0;
    if (!isListed)
        format.setTextIndent(exactPixels(state.first));
    else if (state.first != 0)
        format.setProperty(richtext::ListFirstIndent, state.first);
}

} // namespace

RtfFormats::RtfFormats(const RtfFontTable &fonts,
                       const QList<QColor> &colours,
                       const RtfFields &fields,
                       const RtfKeptWords &kept)
    : m_fonts(fonts), m_colours(colours), m_fields(fields), m_kept(kept)
{ }

int RtfFormats::addCharacterFormat(const QTextCharFormat &format)
{
    m_characters.append(format);
    return static_cast<int>(m_characters.size()) - 1;
}

int RtfFormats::characterFormat(const RtfCharState &state)
{
    if (m_lastCharactersIndex >= 0 && m_lastCharacters == state)
        return m_lastCharactersIndex;
    auto found = m_characterIndices.constFind(state);
    if (found == m_characterIndices.constEnd())
        found = m_characterIndices.insert(state, addCharacterFormat(makeCharacter(state)));
    m_lastCharacters = state;
    m_lastCharactersIndex = *found;
    return *found;
}

int RtfFormats::rawObjectFormat(const RtfCharState &state, const QByteArray &rtf)
{
    QTextCharFormat format = character(characterFormat(state));
    format.setObjectType(richtext::RawObject);
    format.setProperty(richtext::RawRtf, rtf);
    format.setProperty(richtext::RawHash, rawHash(rtf));
    return addCharacterFormat(format);
}

QTextCharFormat RtfFormats::makeCharacter(const RtfCharState &state) const
{
    QTextCharFormat format;
    setFont(format, state);
    setPosition(format, state);
    if (const QColor text = colour(state.colour); text.isValid())
        format.setForeground(text);
    if (const QColor behind = colour(state.background); behind.isValid())
        format.setBackground(behind);
    if (state.style > 0)
        format.setProperty(richtext::CharacterStyle, state.style);
    if (state.kept > 0)
        format.setProperty(richtext::KeptWords, QString::fromLatin1(m_kept.at(state.kept)));
    if (state.field >= 0)
        setField(format, state.field);
    return format;
}

void RtfFormats::setFont(QTextCharFormat &format, const RtfCharState &state) const
{
    const QString stated = m_fonts.name(state.font >= 0 ? state.font : m_defaultFont);
    const QString family = stated.isEmpty() ? m_fonts.name(m_defaultFont) : stated;
    if (!family.isEmpty())
        format.setFontFamilies({family});
    format.setFontPointSize(state.halfPoints / 2.0);
    if (state.has(RtfCharState::Bold))
        format.setFontWeight(QFont::Bold);
    if (state.has(RtfCharState::Italic))
        format.setFontItalic(true);
    if (state.has(RtfCharState::Underline))
        format.setFontUnderline(true);
    if (state.has(RtfCharState::Strike) || state.has(RtfCharState::DoubleStrike))
        format.setFontStrikeOut(true);
    if (state.has(RtfCharState::DoubleStrike))
        format.setProperty(richtext::DoubleStrike, true);
    if (state.has(RtfCharState::Caps))
        format.setFontCapitalization(QFont::AllUppercase);
    else if (state.has(RtfCharState::SmallCaps))
        format.setFontCapitalization(QFont::SmallCaps);
}

void RtfFormats::setPosition(QTextCharFormat &format, const RtfCharState &state) const
{
    if (state.has(RtfCharState::Super))
        format.setVerticalAlignment(QTextCharFormat::AlignSuperScript);
    else if (state.has(RtfCharState::Sub))
        format.setVerticalAlignment(QTextCharFormat::AlignSubScript);
    if (state.baseline != 0) {
        format.setProperty(richtext::BaselineHalfPoints, state.baseline);
        format.setBaselineOffset(100.0 * state.baseline / state.halfPoints);
    }
}

void RtfFormats::setField(QTextCharFormat &format, int field) const
{
    const RtfField &innermost = m_fields[field];
    format.setProperty(richtext::FieldId, field + 1);
    format.setProperty(richtext::FieldInstruction, innermost.instruction);
    if (const QString target = rtfHyperlinkTarget(innermost.code); !target.isEmpty()) {
        format.setAnchor(true);
        format.setAnchorHref(target);
    }
    QVariantList around;
    for (int outer = innermost.outer; outer >= 0 && around.size() < 2 * deepestFields;
         outer = m_fields[outer].outer) {
        around.prepend(m_fields[outer].instruction);
        around.prepend(outer + 1);
    }
    if (!around.isEmpty())
        format.setProperty(richtext::OuterFields, around);
}

int RtfFormats::paragraphFormat(const RtfParaState &state)
{
    if (m_lastParagraphIndex >= 0 && m_lastParagraph == state)
        return m_lastParagraphIndex;
    auto found = m_paragraphIndices.constFind(state);
    if (found == m_paragraphIndices.constEnd()) {
        m_paragraphs.append(makeParagraph(state));
        found = m_paragraphIndices.insert(state, static_cast<int>(m_paragraphs.size()) - 1);
    }
    m_lastParagraph = state;
    m_lastParagraphIndex = *found;
    return *found;
}

QTextBlockFormat RtfFormats::makeParagraph(const RtfParaState &state) const
{
    QTextBlockFormat format;
    format.setAlignment(alignmentOf(state));
    setMargins(format, state);
    setLineHeight(format, state);
    setTabs(format, state.tabs);
    if (state.rightToLeft)
        format.setLayoutDirection(Qt::RightToLeft);
    if (state.keepLines)
        format.setNonBreakableLines(true);
    if (state.pageBreakBefore)
        format.setPageBreakPolicy(QTextFormat::PageBreak_AlwaysBefore);
    if (state.keepNext)
        format.setProperty(richtext::KeepWithNext, true);
    if (state.style > 0)
        format.setProperty(richtext::ParagraphStyle, state.style);
    if (const QColor behind = colour(state.shading); behind.isValid())
        format.setBackground(behind);
    if (state.kept > 0)
        format.setProperty(richtext::KeptWords, QString::fromLatin1(m_kept.at(state.kept)));
    if (state.list > 0)
        format.setProperty(richtext::ListLevel, state.level);
    return format;
}

} // namespace vandrel
