// The groups of RtfParser: destinations, and what is done where they end.
#include <algorithm>

#include "platform/richtext/RtfParser.h"
#include "platform/richtext/RtfPicture.h"
#include "runtime/Twips.h"

namespace vandrel {

namespace {

constexpr qsizetype mostLegacyLists = 65'536;

bool hasText(QByteArrayView group)
{
    return !rtfInstructionText(group).isEmpty() || group.contains("\\pict");
}

void setPictureRtf(QTextCharFormat &format, const QByteArray &rtf)
{
    format.setProperty(richtext::PictureRtf, rtf);
    format.setProperty(richtext::RawHash, rawHash(rtf));
}

bool isHeader(RtfWord word)
{
    return word == RtfWord::Header || word == RtfWord::Headerl || word == RtfWord::Headerr
        || word == RtfWord::Headerf;
}

} // namespace

RtfParser::Skipped RtfParser::skipGroup()
{
    const qsizetype start = group().start;
    const RtfTokenizer::Skipped skipped = m_tokens.skipGroup();
    const qsizetype end = m_tokens.position();
    m_groups.pop_back();
    Skipped result;
    result.inner = m_rtf.sliced(start + 1, end - start - (skipped.closed ? 2 : 1));
    if (skipped.closed && skipped.intact)
        result.whole = m_rtf.sliced(start, end - start).toByteArray();
    m_losses.truncated = m_losses.truncated || !skipped.closed;
    return result;
}

QByteArray RtfParser::wholeGroup(const Group &group) const
{
    return m_losses.truncated ? QByteArray()
                              : m_rtf.sliced(group.start, m_tokens.position() - group.start).toByteArray();
}

void RtfParser::keepInHeader(const QByteArray &whole)
{
    if (!whole.isEmpty() && isInHeader() && m_groups.size() == 2)
        m_prologue.otherGroups.append(whole);
}

void RtfParser::keepInline(const QByteArray &whole)
{
    if (!whole.isEmpty() && !group().isSilent)
        m_sink.addObject(story(), m_formats.rawObjectFormat(group().characters, whole));
}

void RtfParser::takeUnknownOptional()
{
    const QByteArray whole = skipGroup().whole;
    if (!takeNoteGroup(whole))
        keepInHeader(whole);
}

/// Takes the word that names the group; false when it names none that is known here.
bool RtfParser::takeDestination(RtfWord word)
{
    return takeTable(word) || takeKept(word) || takeShapeDestination(word) || takeFlowDestination(word);
}

bool RtfParser::takeTable(RtfWord word)
{
    const auto keepFirst = [](QByteArray &kept, const QByteArray &whole) {
        if (kept.isEmpty())
            kept = whole;
    };
    switch (word) {
    case RtfWord::Fonttbl: {
        CodePageDecoder decoder;
        m_fonts.read(skipGroup().inner, m_sink.documentPage(), m_limits.fonts, decoder);
        return true;
    }
    case RtfWord::Colortbl:
        m_colours = readRtfColours(skipGroup().inner, m_limits.colours);
        return true;
    case RtfWord::Stylesheet: {
        const Skipped skipped = skipGroup();
        keepFirst(m_prologue.styleSheet, skipped.whole);
        m_styles.read(skipped.inner, m_kept);
        return true;
    }
    case RtfWord::Listtable: {
        const Skipped skipped = skipGroup();
        keepFirst(m_prologue.listTable, skipped.whole);
        m_lists.readLists(skipped.inner);
        return true;
    }
    case RtfWord::Listoverridetable: {
        const Skipped skipped = skipGroup();
        keepFirst(m_prologue.listOverrideTable, skipped.whole);
        m_lists.readOverrides(skipped.inner);
        return true;
    }
    default:
        return false;
    }
}

/// Groups that are kept as they are, or known to be of no use.
bool RtfParser::takeKept(RtfWord word)
{
    switch (word) {
    case RtfWord::Info:
    case RtfWord::Generator:
    case RtfWord::Ftnsep:
    case RtfWord::Ftnsepc:
    case RtfWord::Ftncn:
    case RtfWord::Aftnsep:
    case RtfWord::Aftnsepc:
    case RtfWord::Aftncn:
        keepInHeader(skipGroup().whole);
        return true;
    case RtfWord::Bkmkstart:
    case RtfWord::Bkmkend:
    case RtfWord::Xe:
    case RtfWord::Tc:
    case RtfWord::Atrfstart:
    case RtfWord::Atrfend:
        keepInline(skipGroup().whole);
        return true;
    case RtfWord::Template:
    case RtfWord::Objdata:
    case RtfWord::Nonshppict:
    case RtfWord::Nonesttables:
    case RtfWord::Shprslt:
        skipGroup();
        return true;
    case RtfWord::Atnid:
    case RtfWord::Atnauthor:
        takeAuthor(word);
        return true;
    case RtfWord::Header:
    case RtfWord::Headerl:
    case RtfWord::Headerr:
    case RtfWord::Headerf:
    case RtfWord::Footer:
    case RtfWord::Footerl:
    case RtfWord::Footerr:
    case RtfWord::Footerf:
        takeHeaderOrFooter(word);
        return true;
    default:
        return false;
    }
}

bool RtfParser::takeShapeDestination(RtfWord word)
{
    switch (word) {
    case RtfWord::Shp:
    case RtfWord::Shpgrp:
    case RtfWord::Do:
        beginShape();
        return true;
    case RtfWord::Shpinst:
    case RtfWord::Sp:
    case RtfWord::Sv:
        return true;
    case RtfWord::Sn:
        takeShapeProperty();
        return true;
    case RtfWord::Shptxt:
    case RtfWord::Dptxbxtext:
        beginTextBox();
        return true;
    default:
        return false;
    }
}

bool RtfParser::takeFlowDestination(RtfWord word)
{
    switch (word) {
    case RtfWord::Field:
        beginField();
        return true;
    case RtfWord::Fldinst:
        takeInstruction();
        return true;
    case RtfWord::Fldrslt:
        beginResult();
        return true;
    case RtfWord::Footnote:
        beginNote(false);
        return true;
    case RtfWord::Annotation:
        beginNote(true);
        return true;
    case RtfWord::Pict:
        takePicture();
        return true;
    case RtfWord::Shppict:
        beginRole(Role::ShapePicture);
        return true;
    case RtfWord::Pntext:
    case RtfWord::Listtext:
        beginRole(Role::ListText);
        return true;
    case RtfWord::Pn:
        takeLegacyList();
        return true;
    case RtfWord::Object:
        beginObject();
        return true;
    case RtfWord::Result:
        group().isSilent = group().isSilent && m_objectDepth == 0;
        return true;
    case RtfWord::Upr:
        beginRole(Role::Alternatives);
        return true;
    case RtfWord::Ud:
        return true;
    case RtfWord::Nesttableprops:
        beginRole(Role::NestedRow);
        m_rows.suspend();
        return true;
    default:
        return false;
    }
}

void RtfParser::beginRole(Role role)
{
    group().role = role;
    group().mark = story().mark();
    group().runs = group().mark;
    group().paragraphs = static_cast<qsizetype>(story().paragraphs().size());
}

bool RtfParser::hasGrown(const Group &group) const
{
    return group.story->openRuns() != group.mark
        || static_cast<qsizetype>(group.story->paragraphs().size()) != group.paragraphs;
}

void RtfParser::endRole(const Group &ended)
{
    switch (ended.role) {
    case Role::ListText:
        story().makeListText(std::min(ended.mark, story().openRuns()));
        break;
    case Role::Field:
        endField(ended);
        break;
    case Role::Note:
        endNote();
        break;
    case Role::TextBox:
        endTextBox(ended);
        break;
    case Role::Shape:
        endShape(ended);
        break;
    case Role::Object:
        endObject(ended);
        break;
    case Role::NestedRow:
        m_rows.resume();
        break;
    case Role::Plain:
    case Role::Alternatives:
    case Role::FieldResult:
    case Role::ShapePicture:
        break;
    }
}

void RtfParser::beginField()
{
    m_sink.settleHidden(story());
    beginRole(Role::Field);
    group().field = static_cast<int>(m_fields.size());
    RtfField field;
    field.outer = group().characters.field;
    m_fields.append(field);
}

void RtfParser::takeInstruction()
{
    const Skipped skipped = skipGroup();
    if (group().field < 0)
        return;
    RtfField &field = m_fields[group().field];
    field.instruction = skipped.whole;
    field.code = rtfInstructionText(skipped.inner);
}

void RtfParser::beginResult()
{
    const int field = m_groups[m_groups.size() - 2].field;
    beginRole(Role::FieldResult);
    if (field >= 0 && !m_fields[field].instruction.isEmpty())
        group().characters.field = field;
}

void RtfParser::endField(const Group &ended)
{
    m_sink.settleHidden(story());
    const RtfField &field = m_fields[ended.field];
    if (hasGrown(ended) || field.instruction.isEmpty())
        return;
    const RtfSymbolField symbol = rtfSymbolField(field.code);
    if (symbol.character.isEmpty())
        keepInline(wholeGroup(ended));
    else
        addSymbol(ended.field, symbol);
}

void RtfParser::addSymbol(int field, const RtfSymbolField &symbol)
{
    RtfCharState state = group().characters;
    state.field = field;
    if (const int font = m_fonts.numberOf(symbol.font); font >= 0)
        state.font = font;
    if (!group().isSilent)
        m_sink.addText(story(), state, symbol.character);
}

void RtfParser::beginShape()
{
    beginRole(Role::Shape);
    group().mark = m_shapeContents;
    group().isSilent = true;
    ++m_shapeDepth;
}

void RtfParser::endShape(const Group &ended)
{
    // The parts of a grouped drawing are one drawing.
    if (--m_shapeDepth > 0)
        return;
    group().isSilent = m_groups[m_groups.size() - 2].isSilent;
    if (m_shapeContents == ended.mark) {
        keepInline(wholeGroup(ended));
        ++m_losses.drawingsHidden;
    } else if (!keepAsPicture(ended))
        ++m_losses.drawingsAsText;
}

/// One picture can stand for all that a group holds, so that the group is kept; false for anything else.
bool RtfParser::keepAsPicture(const Group &ended)
{
    m_sink.settleHidden(story());
    const bool isOneRun = story().openRuns() == ended.runs + 1
        && static_cast<qsizetype>(story().paragraphs().size()) == ended.paragraphs;
    if (!isOneRun || m_losses.truncated)
        return false;
    const RtfRun &run = story().openRun(ended.runs);
    QTextCharFormat format = m_formats.character(run.format);
    if (!format.isImageFormat() || run.length != 1)
        return false;
    setPictureRtf(format, wholeGroup(ended));
    m_formats.setCharacter(run.format, format);
    return true;
}

void RtfParser::takeShapeProperty()
{
    m_isPictureProperty = rtfInstructionText(skipGroup().inner) == QLatin1String("pib");
}

void RtfParser::beginTextBox()
{
    m_sink.settleHidden(story());
    const int depth = paragraphDepth();
    story().suspend();
    beginRole(Role::TextBox);
    group().isSilent = false;
    group().baseDepth = depth;
    group().characters.reset();
    group().paragraph.reset();
}

void RtfParser::endTextBox(const Group &ended)
{
    m_sink.settleHidden(story());
    if (hasGrown(ended))
        ++m_shapeContents;
    if (story().openRuns() > 0)
        endParagraph(paragraphDepth());
    story().resume();
}

void RtfParser::beginObject()
{
    m_sink.settleHidden(story());
    beginRole(Role::Object);
    ++m_objectDepth;
}

/// An object is shown by its result. One picture can stand for the whole object, so that it is kept; of a longer
/// result only the text stays.
void RtfParser::endObject(const Group &ended)
{
    if (--m_objectDepth > 0)
        return;
    m_sink.settleHidden(story());
    if (!hasGrown(ended)) {
        keepInline(wholeGroup(ended));
        ++m_losses.objectsHidden;
        return;
    }
    if (!keepAsPicture(ended))
        ++m_losses.objectsAsText;
}

void RtfParser::takePicture()
{
    const bool isShown = !group().isSilent || (m_shapeDepth > 0 && m_isPictureProperty);
    Skipped skipped = skipGroup();
    const RtfCharState &state = group().characters;
    if (!isShown || state.has(RtfCharState::Deleted))
        return;
    if (group().role == Role::ShapePicture && !skipped.whole.isEmpty())
        skipped.whole = "{\\*\\shppict" + skipped.whole + '}';
    if (state.has(RtfCharState::Hidden)) {
        keepInline(skipped.whole);
        return;
    }
    const DocumentPicture picture = readRtfPicture(skipped.inner);
    m_losses.pictureFrames += picture.data.isEmpty() ? 1 : 0;
    m_shapeContents += m_shapeDepth > 0 ? 1 : 0;
    QTextCharFormat format = m_formats.character(m_formats.characterFormat(state));
    format.setObjectType(QTextFormat::ImageObject);
    format.setProperty(QTextFormat::ImageName, m_document.addPicture(picture));
    format.setProperty(QTextFormat::ImageWidth, picture.goal.width() / twipsPerPixel);
    format.setProperty(QTextFormat::ImageHeight, picture.goal.height() / twipsPerPixel);
    if (!skipped.whole.isEmpty())
        setPictureRtf(format, skipped.whole);
    m_sink.addObject(story(), m_formats.addCharacterFormat(format));
}

void RtfParser::takeLegacyList()
{
    const RtfLegacyList list = readRtfLegacyList(skipGroup().inner);
    const bool isKnown = !m_legacyLists.isEmpty() && m_legacyLists.last() == list;
    if (!isKnown && m_legacyLists.size() < mostLegacyLists)
        m_legacyLists.append(list);
    group().paragraph.legacyList = static_cast<int>(m_legacyLists.size()) - 1;
}

void RtfParser::takeHeaderOrFooter(RtfWord word)
{
    const Skipped skipped = skipGroup();
    if (skipped.whole.isEmpty())
        return;
    if (hasText(skipped.inner))
        ++(isHeader(word) ? m_losses.headers : m_losses.footers);
    if (m_sections.isEmpty())
        m_prologue.headersAndFooters.append(skipped.whole);
    else
        m_sections.last().append(skipped.whole);
}

} // namespace vandrel
