#include "platform/richtext/RtfWriterFormats.h"

#include <algorithm>
#include <cmath>

#include <QBrush>
#include <QFont>
#include <QTextBlockFormat>
#include <QTextDocument>

#include "controls/RichTextDocument.h"
#include "platform/richtext/RtfUnits.h"

namespace vandrel {

namespace {

constexpr int defaultHalfPoints = 24;
constexpr double linesPerPercent = 2.4;
// How far a number hangs out in a list that says nothing about it, in twips.
constexpr int listHang = -360;

int twipsOf(double pixels)
{
    return clampTwips(static_cast<int>(std::lround(pixels * twipsPerPixel)));
}

// A word with a number is needed when a reader would otherwise come to another value.
class WordList
{
public:
    void always(const char *name) { (m_words += '\\') += name; }
    void number(const char *name, int wanted, int byDefault, int byStyle)
    {
        if (wanted != byDefault || wanted != byStyle)
            appendRtfWord(m_words, name, wanted);
    }
    void flag(const char *on, const char *off, bool wanted, bool byStyle)
    {
        if (wanted)
            always(on);
        else if (byStyle)
            always(off);
    }
    // Words that were kept as they stood; the flags of the format are all in front of them.
    void kept(const QTextFormat &format) { m_words += format.property(richtext::KeptWords).toByteArray(); }
    const QByteArray &words() const { return m_words; }

private:
    QByteArray m_words;
};

struct FlagWords {
    RtfCharState::Flag flag;
    const char *on;
    const char *off;
};

constexpr FlagWords flagWords[] = {
    {RtfCharState::Bold, "b", "b0"},
    {RtfCharState::Italic, "i", "i0"},
    {RtfCharState::Underline, "ul", "ulnone"},
    {RtfCharState::Strike, "strike", "strike0"},
    {RtfCharState::DoubleStrike, "striked1", "striked0"},
    {RtfCharState::Caps, "caps", "caps0"},
    {RtfCharState::SmallCaps, "scaps", "scaps0"},
    {RtfCharState::Super, "super", "super0"},
    {RtfCharState::Sub, "sub", "sub0"},
};

void setFlags(RtfCharState &state, const QTextCharFormat &format)
{
    const bool isDouble = format.boolProperty(richtext::DoubleStrike);
    state.set(RtfCharState::Bold, format.fontWeight() >= QFont::DemiBold);
    state.set(RtfCharState::Italic, format.fontItalic());
    state.set(RtfCharState::Underline,
              format.fontUnderline() || format.underlineStyle() == QTextCharFormat::SingleUnderline);
    state.set(RtfCharState::DoubleStrike, isDouble && format.fontStrikeOut());
    state.set(RtfCharState::Strike, !isDouble && format.fontStrikeOut());
    state.set(RtfCharState::Caps, format.fontCapitalization() == QFont::AllUppercase);
    state.set(RtfCharState::SmallCaps, format.fontCapitalization() == QFont::SmallCaps);
}

double pointSizeOf(const QFont &font)
{
    return font.pointSizeF() > 0 ? font.pointSizeF() : font.pixelSize() * pointsPerPixel;
}

QString familyOf(const QTextCharFormat &format)
{
    const QStringList families = format.fontFamilies().toStringList();
    return families.value(0);
}

// The side is the paragraph's own in the format and the page's in RTF.
int alignmentOf(const QTextBlockFormat &format)
{
    const Qt::Alignment alignment = format.alignment();
    if (alignment & Qt::AlignHCenter)
        return RtfParaState::AlignCentre;
    if (alignment & Qt::AlignJustify)
        return RtfParaState::AlignJustify;
    const bool mirrored = format.layoutDirection() == Qt::RightToLeft && !(alignment & Qt::AlignAbsolute);
    const bool right = alignment & Qt::AlignRight;
    return right != mirrored ? RtfParaState::AlignRight : RtfParaState::AlignLeft;
}

const char *alignmentWord(int alignment)
{
    switch (alignment) {
    case RtfParaState::AlignRight:
        return "qr";
    case RtfParaState::AlignCentre:
        return "qc";
    case RtfParaState::AlignJustify:
        return "qj";
    default:
        return "ql";
    }
}

RtfTab::Type tabType(QTextOption::TabType type)
{
    switch (type) {
    case QTextOption::RightTab:
        return RtfTab::Right;
    case QTextOption::CenterTab:
        return RtfTab::Centre;
    case QTextOption::DelimiterTab:
        return RtfTab::Decimal;
    case QTextOption::LeftTab:
        break;
    }
    return RtfTab::Left;
}

const char *tabWord(RtfTab::Type type)
{
    switch (type) {
    case RtfTab::Right:
        return "tqr";
    case RtfTab::Centre:
        return "tqc";
    case RtfTab::Decimal:
        return "tqdec";
    case RtfTab::Left:
        break;
    }
    return nullptr;
}

void setLineSpacing(RtfParaState &state, const QTextBlockFormat &format)
{
    const double height = format.lineHeight();
    switch (format.lineHeightType()) {
    case QTextBlockFormat::ProportionalHeight:
        state.lineSpacing = clampTwips(static_cast<int>(std::lround(height * linesPerPercent)));
        state.lineSpacingMultiple = 1;
        break;
    case QTextBlockFormat::MinimumHeight:
        state.lineSpacing = twipsOf(height);
        break;
    case QTextBlockFormat::FixedHeight:
        state.lineSpacing = -twipsOf(height);
        break;
    default:
        break;
    }
}

RtfTab::Leader leaderAt(int position, const QVariantList &leaders)
{
    for (qsizetype i = 0; i + 1 < leaders.size(); i += 2) {
        const int leader = leaders[i + 1].toInt();
        if (leaders[i].toInt() == position && leader > RtfTab::Blank && leader <= RtfTab::EqualSigns)
            return static_cast<RtfTab::Leader>(leader);
    }
    return RtfTab::Blank;
}

const char *leaderWord(RtfTab::Leader leader)
{
    switch (leader) {
    case RtfTab::Dots:
        return "tldot";
    case RtfTab::MiddleDots:
        return "tlmdot";
    case RtfTab::Hyphens:
        return "tlhyph";
    case RtfTab::Underline:
        return "tlul";
    case RtfTab::ThickLine:
        return "tlth";
    case RtfTab::EqualSigns:
        return "tleq";
    case RtfTab::Blank:
        break;
    }
    return nullptr;
}

void setTabs(RtfParaState &state, const QTextBlockFormat &format)
{
    const QList<QTextOption::Tab> tabs = format.tabPositions();
    const QVariantList leaders = format.property(richtext::TabLeaders).toList();
    for (const QTextOption::Tab &tab : tabs) {
        const int position = twipsOf(tab.position);
        state.tabs.append({position, tabType(tab.type), leaderAt(position, leaders)});
    }
}

void appendTabs(WordList &words, const RtfParaState &state)
{
    for (const RtfTab &tab : state.tabs) {
        if (const char *word = tabWord(tab.type))
            words.always(word);
        if (const char *word = leaderWord(tab.leader))
            words.always(word);
        words.number("tx", tab.position, rtfUnset, rtfUnset);
    }
}

void appendMargins(WordList &words, const RtfParaState &state, const RtfParaState &style)
{
    words.number("fi", state.first, 0, style.first);
    words.number("li", state.left, 0, style.left);
    words.number("ri", state.right, 0, style.right);
    words.number("sb", state.before, 0, style.before);
    words.number("sa", state.after, 0, style.after);
    if (state.lineSpacing != 0 || style.lineSpacing != 0) {
        words.number("sl", state.lineSpacing, rtfUnset, rtfUnset);
        words.number("slmult", state.lineSpacingMultiple, rtfUnset, rtfUnset);
    }
}

} // namespace

RtfWriterFormats::RtfWriterFormats(const QTextDocument &document,
                                   RtfWriterTables &tables,
                                   RtfWriterLists &lists)
    : m_tables(tables), m_lists(lists), m_defaultPointSize(pointSizeOf(document.defaultFont())),
      m_indentWidth(document.indentWidth())
{ }

const QByteArray &
RtfWriterFormats::characterWords(int index, const QTextCharFormat &format, int paragraphStyle)
{
    const std::pair key(index, paragraphStyle);
    const auto known = m_characterWords.constFind(key);
    if (known != m_characterWords.constEnd())
        return *known;
    return *m_characterWords.insert(key, makeCharacterWords(format, paragraphStyle));
}

QByteArray RtfWriterFormats::eastAsianWords(const QTextCharFormat &format)
{
    const QString family = familyOf(format);
    QByteArray words;
    if (!family.isEmpty())
        appendRtfWord(words += "\\dbch", "af", m_tables.font(family));
    return words;
}

int RtfWriterFormats::halfPoints(const QTextCharFormat &format) const
{
    double points = m_defaultPointSize;
    if (format.hasProperty(QTextFormat::FontPointSize))
        points = format.fontPointSize();
    else if (format.hasProperty(QTextFormat::FontPixelSize))
        points = format.intProperty(QTextFormat::FontPixelSize) * pointsPerPixel;
    return std::max(1, static_cast<int>(std::lround(points * 2)));
}

int RtfWriterFormats::colourOf(const QTextFormat &format, QTextFormat::Property brush)
{
    const QBrush found = format.brushProperty(brush);
    return found.style() == Qt::SolidPattern ? m_tables.colour(found.color()) : -1;
}

RtfCharState RtfWriterFormats::characterState(const QTextCharFormat &format)
{
    RtfCharState state;
    const QString family = familyOf(format);
    state.font = family.isEmpty() ? m_tables.defaultFont() : m_tables.font(family);
    state.halfPoints = halfPoints(format);
    state.colour = colourOf(format, QTextFormat::ForegroundBrush);
    state.background = colourOf(format, QTextFormat::BackgroundBrush);
    state.style = format.intProperty(richtext::CharacterStyle);
    setFlags(state, format);
    setPosition(state, format);
    return state;
}

void RtfWriterFormats::setPosition(RtfCharState &state, const QTextCharFormat &format) const
{
    state.baseline = format.intProperty(richtext::BaselineHalfPoints);
    state.set(RtfCharState::Super, format.verticalAlignment() == QTextCharFormat::AlignSuperScript);
    state.set(RtfCharState::Sub, format.verticalAlignment() == QTextCharFormat::AlignSubScript);
}

// What a reader that knows the styles has before the run's own words. Some readers give a paragraph without a
// style the style number 0.
RtfCharState RtfWriterFormats::characterBase(int paragraphStyle, int characterStyle)
{
    RtfCharState base;
    base.overlay(m_tables.styles().paragraphStyle(paragraphStyle).characters);
    // Every paragraph states it where it is known, see makeParagraphWords().
    if (m_tables.hasDefaultFont() || base.font < 0)
        base.font = m_tables.defaultFont();
    if (characterStyle > 0)
        base.overlay(m_tables.styles().characterStyle(characterStyle).characters);
    return base;
}

QByteArray RtfWriterFormats::makeCharacterWords(const QTextCharFormat &format, int paragraphStyle)
{
    const RtfCharState state = characterState(format);
    const RtfCharState base = characterBase(paragraphStyle, state.style);
    WordList words;
    words.number("cs", state.style, 0, 0);
    words.number("f", state.font, m_tables.defaultFont(), base.font);
    words.number("fs", state.halfPoints, defaultHalfPoints, base.halfPoints);
    for (const FlagWords &flag : flagWords)
        words.flag(flag.on, flag.off, state.has(flag.flag), base.has(flag.flag));
    if (state.baseline != 0 || base.baseline != 0)
        words.number(state.baseline < 0 ? "dn" : "up", std::abs(state.baseline), rtfUnset, rtfUnset);
    if (state.colour >= 0 || base.colour >= 0)
        words.number("cf", state.colour >= 0 ? state.colour : m_tables.automaticColour(), rtfUnset, rtfUnset);
    if (state.background >= 0) {
        words.number("cb", state.background, 0, 0);
        words.number("chcbpat", state.background, 0, 0);
        words.number("highlight", state.background, 0, 0);
    } else if (base.background >= 0) {
        words.always("highlight0");
    }
    words.kept(format);
    return words.words();
}

const QByteArray &RtfWriterFormats::paragraphWords(const QTextBlock &block, int depth)
{
    const std::pair key(block.blockFormatIndex(), depth);
    const auto known = m_paragraphWords.constFind(key);
    if (known != m_paragraphWords.constEnd())
        return *known;
    return *m_paragraphWords.insert(key, makeParagraphWords(block, depth));
}

RtfParaState RtfWriterFormats::paragraphState(const QTextBlock &block)
{
    const QTextBlockFormat format = block.blockFormat();
    const QTextList *list = block.textList();
    RtfParaState state;
    const int steps = format.indent() + (list ? list->format().indent() : 0);
    state.alignment = alignmentOf(format);
    state.left = twipsOf(format.leftMargin() + steps * m_indentWidth);
    state.right = twipsOf(format.rightMargin());
    state.before = twipsOf(format.topMargin());
    state.after = twipsOf(format.bottomMargin());
    state.first = twipsOf(format.textIndent());
    if (list) {
        state.list = m_lists.number(*list);
        state.level = format.intProperty(richtext::ListLevel);
        const bool isFresh = list->format().indent() > 0;
        state.first = isFresh ? listHang : format.intProperty(richtext::ListFirstIndent);
    }
    state.keepLines = format.nonBreakableLines();
    state.keepNext = format.boolProperty(richtext::KeepWithNext);
    state.pageBreakBefore = (format.pageBreakPolicy() & QTextFormat::PageBreak_AlwaysBefore) != 0;
    state.rightToLeft = format.layoutDirection() == Qt::RightToLeft;
    state.style = format.intProperty(richtext::ParagraphStyle);
    state.shading = colourOf(format, QTextFormat::BackgroundBrush);
    setLineSpacing(state, format);
    setTabs(state, format);
    return state;
}

QByteArray RtfWriterFormats::makeParagraphWords(const QTextBlock &block, int depth)
{
    const RtfParaState state = paragraphState(block);
    RtfParaState style;
    style.overlay(m_tables.styles().paragraphStyle(state.style).paragraph);
    WordList words;
    words.always("pard");
    words.always("plain");
    words.number("s", state.style, 0, 0);
    // Some readers have a default font of their own, whatever the head of the file says.
    if (m_tables.hasDefaultFont())
        words.number("f", m_tables.defaultFont(), rtfUnset, rtfUnset);
    if (depth > 0)
        words.always("intbl");
    words.number("itap", depth, depth < 2 ? depth : 0, depth < 2 ? depth : 0);
    words.flag("rtlpar", "ltrpar", state.rightToLeft, style.rightToLeft);
    if (state.alignment != RtfParaState::AlignLeft || style.alignment != RtfParaState::AlignLeft)
        words.always(alignmentWord(state.alignment));
    if (state.list == rtflist::Zero)
        words.number("ls", 0, rtfUnset, rtfUnset);
    else
        words.number("ls", state.list, 0, style.list);
    words.number("ilvl", state.level, 0, style.level);
    appendMargins(words, state, style);
    words.flag("keep", "keep0", state.keepLines, style.keepLines);
    words.flag("keepn", "keepn0", state.keepNext, style.keepNext);
    words.flag("pagebb", "pagebb0", state.pageBreakBefore, style.pageBreakBefore);
    if (state.shading >= 0 || style.shading >= 0)
        words.number("cbpat", state.shading >= 0 ? state.shading : m_tables.automaticColour(), rtfUnset,
                     rtfUnset);
    appendTabs(words, state);
    words.kept(block.blockFormat());
    return words.words();
}

} // namespace vandrel
