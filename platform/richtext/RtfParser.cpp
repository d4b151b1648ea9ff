#include "platform/richtext/RtfParser.h"

#include <algorithm>

#include "runtime/RuntimeError.h"

namespace vandrel {

namespace {

constexpr qsizetype octetsBetweenChecks = 65'536;

char16_t specialCharacter(RtfWord word)
{
    switch (word) {
    case RtfWord::Lquote:
        return 0x2018;
    case RtfWord::Rquote:
        return 0x2019;
    case RtfWord::Ldblquote:
        return 0x201C;
    case RtfWord::Rdblquote:
        return 0x201D;
    case RtfWord::Bullet:
        return 0x2022;
    case RtfWord::Emdash:
        return 0x2014;
    case RtfWord::Endash:
        return 0x2013;
    case RtfWord::Emspace:
        return 0x2003;
    case RtfWord::Enspace:
        return 0x2002;
    case RtfWord::Qmspace:
        return 0x2005;
    case RtfWord::Zwj:
        return 0x200D;
    case RtfWord::Zwnj:
        return 0x200C;
    case RtfWord::Zwbo:
        return 0x200B;
    case RtfWord::Zwnbo:
        return 0x2060;
    case RtfWord::Ltrmark:
        return 0x200E;
    case RtfWord::Rtlmark:
        return 0x200F;
    default:
        return 0;
    }
}

char16_t symbolCharacter(char symbol)
{
    switch (symbol) {
    case '~':
        return 0x00A0;
    case '-':
        return 0x00AD;
    case '_':
        return 0x2011;
    case '\t':
        return u'\t';
    default:
        return 0;
    }
}

} // namespace

RtfParser::RtfParser(QByteArrayView rtf,
                     RichTextDocument &document,
                     DocumentProgress &progress,
                     RtfExtent extent,
                     const RtfLimits &limits)
    : m_rtf(rtf), m_document(document), m_progress(progress), m_extent(extent), m_limits(limits),
      m_tokens(rtf), m_formats(m_fonts, m_colours, m_fields, m_kept),
      m_sink(m_formats, m_fonts, limits.characters), m_rowCells(limits.tableDepth + 1, 0)
{ }

bool RtfParser::run()
{
    m_groups.reserve(64);
    Group outermost;
    outermost.story = &m_body;
    m_groups.push_back(outermost);
    while (!m_isDone) {
        if (isCancelled())
            return false;
        const RtfToken token = m_tokens.next();
        if (token.type == RtfToken::Type::End) {
            m_losses.truncated = true;
            break;
        }
        take(token);
    }
    finish();
    return true;
}

bool RtfParser::isCancelled()
{
    const qsizetype position = m_tokens.position();
    if (position < m_nextCheck)
        return false;
    m_nextCheck = position + octetsBetweenChecks;
    m_progress.done.store(position, std::memory_order_relaxed);
    return m_progress.cancelled.load(std::memory_order_relaxed);
}

void RtfParser::finish()
{
    flush();
    // Groups that were never closed end here, in the order they would have been closed.
    while (m_groups.size() > 1)
        closeGroup();
    endWithParagraph();
    noteTail();
}

/// Ends the last paragraph, in the formatting that holds there.
void RtfParser::endBody()
{
    m_sink.settleHidden(m_body);
    if (m_extent == RtfExtent::Part) {
        endPart();
        return;
    }
    if (m_body.openRuns() == 0)
        return;
    const auto isKeptFragment = [this](qsizetype i) {
        return m_formats.character(m_body.openRun(i).format).hasProperty(richtext::RawRtf);
    };
    bool onlyFragments = m_body.lastParagraph() != nullptr;
    for (qsizetype i = 0; onlyFragments && i < m_body.openRuns(); ++i)
        onlyFragments = isKeptFragment(i);
    // Bookmarks that end behind the last paragraph make no further one.
    if (onlyFragments)
        m_body.joinLastParagraph();
    else
        endParagraph(paragraphDepth());
}

/// A part ends inside a paragraph, which may have nothing yet; behind a table that one is made anyway.
void RtfParser::endPart()
{
    const bool isBehindTable = m_body.lastParagraph() == nullptr && !m_body.items().empty();
    if (m_body.openRuns() > 0 || !isBehindTable)
        endParagraph(paragraphDepth());
}

/// A document has a paragraph, and there is one behind every table.
void RtfParser::endWithParagraph()
{
    const std::vector<RtfItem> &items = m_body.items();
    const bool hasTables = m_cells > 0;
    if (!items.empty() && items.back().kind == RtfItem::Paragraph && (items.back().depth == 0 || !hasTables))
        return;
    group().paragraph.reset();
    group().characters.reset();
    endParagraph(0);
}

void RtfParser::noteTail()
{
    const QByteArrayView tail = m_rtf.sliced(m_tokens.position());
    m_losses.tail = std::any_of(tail.begin(), tail.end(), [](char octet) {
        return octet != '\0' && octet != ' ' && octet != '\t' && octet != '\r' && octet != '\n'
            && octet != '\x1A' && octet != '}';
    });
}

void RtfParser::take(const RtfToken &token)
{
    if (token.type == RtfToken::Type::Text) {
        takeText(token.text);
        return;
    }
    if (token.type == RtfToken::Type::Octet) {
        takeOctet(token);
        return;
    }
    if (token.type == RtfToken::Type::Symbol) {
        takeSymbol(token);
        return;
    }
    flush();
    switch (token.type) {
    case RtfToken::Type::GroupOpen:
        openGroup();
        break;
    case RtfToken::Type::GroupClose:
        closeGroup();
        break;
    case RtfToken::Type::Word:
        takeWord(token);
        break;
    default:
        m_toSkip = std::max(m_toSkip - 1, 0);
        break;
    }
}

void RtfParser::openGroup()
{
    m_toSkip = 0;
    if (static_cast<qsizetype>(m_groups.size()) > m_limits.groups) {
        m_losses.tooDeep = true;
        m_tokens.skipGroup();
        return;
    }
    if (group().role == Role::Alternatives) {
        group().role = Role::Plain;
        m_tokens.skipGroup();
        return;
    }
    group().isFresh = false;
    m_groups.push_back(group());
    Group &opened = group();
    opened.role = Role::Plain;
    opened.isFresh = true;
    opened.isOptional = false;
    opened.field = -1;
    // Line ends in front of a brace belong to no group.
    opened.start = m_tokens.position() - 1;
    if (m_groups.size() > 2)
        m_sawGroup = true;
}

void RtfParser::closeGroup()
{
    m_toSkip = 0;
    if (m_groups.size() < 2)
        return;
    const Group closed = group();
    if (closed.role != Role::Plain)
        endRole(closed);
    if (m_groups.size() == 2)
        endBody();
    m_groups.pop_back();
    m_isDone = m_groups.size() < 2;
}

void RtfParser::takeText(QByteArrayView text)
{
    const qsizetype skipped = std::min<qsizetype>(m_toSkip, text.size());
    m_toSkip -= static_cast<int>(skipped);
    group().isFresh = false;
    if (!group().isSilent)
        m_sink.addOctets(text.sliced(skipped));
}

void RtfParser::takeOctet(const RtfToken &token)
{
    if (m_toSkip > 0) {
        --m_toSkip;
        return;
    }
    group().isFresh = false;
    if (!group().isSilent)
        m_sink.addOctet(static_cast<char>(token.number));
}

void RtfParser::takeSymbol(const RtfToken &token)
{
    const char symbol = token.text.front();
    if (m_toSkip > 0) {
        --m_toSkip;
        return;
    }
    if (symbol == '\\' || symbol == '{' || symbol == '}') {
        takeText(token.text);
        return;
    }
    flush();
    if (symbol == '*')
        group().isOptional = group().isFresh;
    else if (symbol == '\r' || symbol == '\n')
        takeBreak(RtfWord::Par);
    else if (const char16_t character = symbolCharacter(symbol))
        addText(QStringView(&character, 1));
}

void RtfParser::addText(QStringView text)
{
    group().isFresh = false;
    if (!group().isSilent)
        m_sink.addText(story(), group().characters, text);
}

void RtfParser::takeWord(const RtfToken &token)
{
    const RtfWordInfo info = rtfWord(token.text);
    if (m_toSkip > 0) {
        --m_toSkip;
        // A special character may be the fallback of another one. Any other word means that there is none.
        if (info.kind == RtfWordKind::Special)
            return;
        m_toSkip = 0;
    }
    if (group().isFresh && m_groups.size() > 2) {
        if (info.kind == RtfWordKind::Destination && takeDestination(info.word)) {
            group().isFresh = false;
            group().isOptional = false;
            return;
        }
        if (group().isOptional) {
            takeUnknownOptional();
            return;
        }
    }
    takeFlowWord(info, token);
}

void RtfParser::takeFlowWord(RtfWordInfo info, const RtfToken &token)
{
    keepHeaderWord(info, token);
    switch (info.kind) {
    case RtfWordKind::Character:
        takeCharacterWord(info.word, token);
        break;
    case RtfWordKind::Paragraph:
        takeParagraphWord(info.word, token);
        break;
    case RtfWordKind::Break:
        takeBreak(info.word);
        break;
    case RtfWordKind::Special:
        takeSpecial(info.word);
        break;
    case RtfWordKind::Unicode:
        takeUnicode(info.word, token);
        break;
    case RtfWordKind::CodePage:
        takeCodePage(info.word, token);
        break;
    case RtfWordKind::Page:
        takePageWord(info.word, token);
        break;
    default:
        if (m_rows.take(info, token))
            m_paragraphBorders = false;
        else if (m_paragraphBorders && isBorderDetail(token))
            group().paragraph.kept = m_kept.append(group().paragraph.kept, token);
        break;
    }
}

/// The words before the first text describe the document: its character set up to the first table, then its pages.
void RtfParser::keepHeaderWord(RtfWordInfo info, const RtfToken &token)
{
    if (info.word == RtfWord::Pard || info.word == RtfWord::Plain || info.kind == RtfWordKind::Row) {
        m_sawParagraph = true;
        m_sectionBegins = false;
    }
    const bool ofSection = m_sectionBegins && info.kind == RtfWordKind::Unknown;
    if (ofSection && group().story == &m_body && m_groups.size() == 2)
        appendRtfWord(m_sections.last(), token);
    const bool describes
        = info.kind == RtfWordKind::Unknown || info.kind == RtfWordKind::CodePage || info.word == RtfWord::Uc;
    if (!describes || info.word == RtfWord::Rtf || m_groups.size() != 2 || m_sawParagraph || !isInHeader())
        return;
    if (!m_sawGroup)
        appendRtfWord(m_prologue.header, token);
    else if (info.kind == RtfWordKind::Unknown)
        appendRtfWord(m_prologue.pageSetup, token);
}

bool RtfParser::isInHeader() const
{
    return m_body.items().empty() && m_body.openRuns() == 0;
}

void RtfParser::takePageWord(RtfWord word, const RtfToken &token)
{
    if (word == RtfWord::Deftab)
        m_tabDistance = std::max(clampTwips(token.number), 0);
    if (isInHeader())
        appendRtfWord(m_prologue.pageSetup, token);
    else if (m_sectionIsOpen && story().openRuns() == 0)
        appendRtfWord(m_sections.last(), token);
}

void RtfParser::takeCharacterWord(RtfWord word, const RtfToken &token)
{
    if (word == RtfWord::Cs) {
        group().characters.overlay(m_styles.characterStyle(token.number).characters);
        group().characters.style = std::max(token.number, 0);
        return;
    }
    applyCharacterWord(group().characters, word, token, m_kept);
}

void RtfParser::takeParagraphWord(RtfWord word, const RtfToken &token)
{
    if (word == RtfWord::S) {
        group().characters.overlay(m_styles.paragraphStyle(token.number).characters);
        group().paragraph.overlay(m_styles.ownParagraph(token.number));
        group().paragraph.style = std::max(token.number, 0);
        return;
    }
    const bool beginsBorder = token.text.startsWith("brdr") || word == RtfWord::Box;
    m_paragraphBorders = beginsBorder;
    if (beginsBorder)
        m_rows.endBorders();
    applyParagraphWord(group().paragraph, word, token, m_kept);
}

void RtfParser::takeSpecial(RtfWord word)
{
    if (word == RtfWord::Chftn || word == RtfWord::Chatn || word == RtfWord::Ftnalt) {
        takeNoteWord(word);
        return;
    }
    const char16_t character = specialCharacter(word);
    addText(QStringView(&character, 1));
}

void RtfParser::takeUnicode(RtfWord word, const RtfToken &token)
{
    if (word == RtfWord::Uc) {
        group().fallback = std::max(token.number, 0);
        return;
    }
    const auto character = static_cast<char16_t>(token.number);
    addText(QStringView(&character, 1));
    m_toSkip = group().fallback;
}

void RtfParser::takeCodePage(RtfWord word, const RtfToken &token)
{
    switch (word) {
    case RtfWord::Mac:
        m_basePage = codepage::MacRoman;
        break;
    case RtfWord::Pc:
        m_basePage = 437;
        break;
    case RtfWord::Pca:
        m_basePage = 850;
        break;
    case RtfWord::Ansi:
        m_basePage = codepage::Western;
        break;
    case RtfWord::Ansicpg:
        m_sink.setDocumentPage(isKnownCodePage(token.number) ? token.number : m_basePage);
        return;
    case RtfWord::Deff:
        m_formats.setDefaultFont(token.number);
        return;
    default:
        return;
    }
    m_sink.setDocumentPage(m_basePage);
}

void RtfParser::takeBreak(RtfWord word)
{
    group().isFresh = false;
    if (group().isSilent)
        return;
    switch (word) {
    case RtfWord::Par:
        endParagraph(paragraphDepth());
        break;
    case RtfWord::Line:
        m_sink.addCharacter(story(), group().characters, QChar::LineSeparator);
        break;
    case RtfWord::Tab:
        m_sink.addCharacter(story(), group().characters, u'\t');
        break;
    case RtfWord::Page:
        m_sink.addCharacter(story(), group().characters, u'\f');
        break;
    case RtfWord::Column:
        keepInline("{\\column}");
        break;
    case RtfWord::Sect:
        endSection();
        break;
    case RtfWord::Cell:
        endCell(group().baseDepth + 1);
        break;
    case RtfWord::Nestcell:
        endCell(group().baseDepth + std::max(group().paragraph.tableDepth, 2));
        break;
    case RtfWord::Row:
        endRow(group().baseDepth + 1);
        break;
    case RtfWord::Nestrow:
        endRow(group().baseDepth + std::max(group().paragraph.tableDepth, 2));
        break;
    default:
        break;
    }
}

int RtfParser::paragraphDepth() const
{
    // Notes have no tables; the text of their cells stands between tabs.
    if (tablesAreFull() || isInNote())
        return 0;
    const Group &now = m_groups.back();
    return static_cast<int>(
        std::min<qint64>(qint64{now.baseDepth} + now.paragraph.depth(), m_limits.tableDepth));
}

RtfListUse RtfParser::listUse(const RtfParaState &paragraph) const
{
    RtfListUse use;
    if (paragraph.list > 0 && m_lists.level(paragraph.list, paragraph.level)) {
        use.override = paragraph.list;
        use.level = paragraph.level;
    } else if (paragraph.legacyList >= 0 && m_legacyLists[paragraph.legacyList].isList)
        use.legacy = paragraph.legacyList;
    return use;
}

/// Where the text of a list begins when its paragraphs do not say: behind the number, which hangs out.
int RtfParser::leftOfList(const RtfListUse &use) const
{
    constexpr int leastLeft = 360;
    return use.override > 0 ? std::max(m_lists.level(use.override, use.level)->left, leastLeft) : leastLeft;
}

void RtfParser::endParagraph(int depth)
{
    m_sink.settleHidden(story());
    m_sectionBegins = false;
    RtfParaState state = group().paragraph;
    RtfParagraph paragraph;
    paragraph.list = listUse(state);
    if (!paragraph.list.isNone() && state.left <= 0)
        state.left = leftOfList(paragraph.list);
    if (paragraph.list.override == 0)
        state.list = 0;
    if (paragraph.list.legacy < 0)
        state.legacyList = -1;
    paragraph.format = m_formats.paragraphFormat(state);
    paragraph.note = isInNote() ? m_note.id : 0;
    paragraph.markFormat = m_formats.characterFormat(group().characters);
    m_tables += std::max(depth - m_lastDepth, 0);
    m_lastDepth = depth;
    m_losses.tablesAsText = m_losses.tablesAsText || ((tablesAreFull() || isInNote()) && state.depth() > 0);
    story().endParagraph(paragraph, depth);
}

void RtfParser::endSection()
{
    if (group().story != &m_body) {
        endParagraph(paragraphDepth());
        return;
    }
    m_sink.settleHidden(story());
    if (story().lastParagraph() == nullptr || story().openRuns() > 0 || story().lastParagraph()->section >= 0)
        endParagraph(paragraphDepth());
    story().lastParagraph()->section = static_cast<int>(m_sections.size());
    m_sections.append("\\sect");
    m_sectionIsOpen = true;
    m_sectionBegins = true;
}

void RtfParser::endCell(int depth)
{
    if (tablesAreFull() || isInNote() || depth > m_limits.tableDepth) {
        m_losses.tablesAsText = true;
        m_sink.addCharacter(story(), group().characters, u'\t');
        return;
    }
    endParagraph(depth);
    story().endCell(depth);
    ++m_cells;
    ++m_rowCells[depth];
}

void RtfParser::endRow(int depth)
{
    m_rows.endRow();
    if (tablesAreFull() || isInNote() || depth > m_limits.tableDepth) {
        m_losses.tablesAsText = true;
        endParagraph(paragraphDepth());
        return;
    }
    m_sink.settleHidden(story());
    if (story().openRuns() > 0)
        endCell(depth);
    story().endRow(depth, m_rows.current());
    m_cells += std::max<qsizetype>(m_rows.cells() - m_rowCells[depth], 0) + 1;
    m_rowCells[depth] = 0;
}

RtfContents RtfParser::takeContents()
{
    return {std::move(m_body), std::move(m_notes),   m_formats, m_lists,
            m_legacyLists,     m_rows.definitions(), m_sections};
}

RtfPrologue RtfParser::takePrologue()
{
    m_prologue.fonts = m_fonts.entries();
    m_prologue.colours = m_colours;
    return std::move(m_prologue);
}

RtfLosses RtfParser::losses() const
{
    RtfLosses losses = m_losses;
    losses.hiddenText = m_sink.metHiddenText();
    losses.deletedText = m_sink.metDeletedText();
    return losses;
}

} // namespace vandrel
