#include "platform/richtext/RtfAssembler.h"

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include <QTextCursor>
#include <QTextList>
#include <QTextTable>

#include "controls/ListMarker.h"
#include "platform/richtext/RtfGrid.h"
#include "platform/richtext/RtfUnits.h"

namespace vandrel {

namespace {

constexpr int paragraphsBetweenChecks = 256;
/// The toolkit visits all items of a list when it gets another one. Bullets look the same in a new list; numbers
/// go on in one that starts where the last one ended, so that they get one only when the visits, in all lists
/// together, would take too long.
constexpr int mostBullets = 500;
constexpr qint64 mostVisits = 25'000'000;

/// Keeps the toolkit's lists in step with the paragraphs: items of one list and level count on across what stands
/// between them, and begin anew behind an item of a higher level.
class ListKeeper
{
public:
    ListKeeper(const RtfLists &lists, const QList<RtfLegacyList> &legacyLists)
        : m_lists(lists), m_legacyLists(legacyLists)
    { }

    void add(QTextCursor &cursor, const RtfListUse &use)
    {
        if (use.override > 0)
            addToLevel(cursor, use);
        else if (use.legacy >= 0)
            addToLegacy(cursor, use.legacy);
    }

    /// An ordinary paragraph ends a list of the old kind.
    void interrupt() { m_legacy = {}; }

private:
    struct Counter {
        QTextList *list = nullptr;
        int count = 0;
    };
    using Counters = std::array<Counter, rtflist::levels>;

    /// True when an item is better put into a new list.
    bool isFull(const Counter &counter)
    {
        if (!counter.list)
            return false;
        m_visits += counter.list->count();
        const bool isNumber = counter.list->format().style() <= QTextListFormat::ListDecimal;
        return counter.list->count() >= mostBullets && (!isNumber || m_visits > mostVisits);
    }

    void addToLevel(QTextCursor &cursor, const RtfListUse &use)
    {
        Counters &counters = m_counters[use.override];
        const auto level = static_cast<std::size_t>(use.level);
        std::fill(counters.begin() + use.level + 1, counters.end(), Counter());
        Counter &counter = counters[level];
        if (isFull(counter))
            counter.list = nullptr;
        if (!counter.list)
            counter.list = cursor.createList(levelFormat(use, counters));
        else
            counter.list->add(cursor.block());
        ++counter.count;
    }

    static bool isNumbered(const RtfListLevel &level)
    {
        return level.kind != rtflist::Bullet && level.kind != rtflist::NoNumber;
    }

    /// The text of a level around its own number. The numbers of the levels above stand still while a list lives,
    /// so they are part of what is before it.
    QTextListFormat levelFormat(const RtfListUse &use, const Counters &counters)
    {
        const RtfListLevel &level = *m_lists.level(use.override, use.level);
        QString before;
        QString after;
        bool isBehind = false;
        for (const QChar c : level.text) {
            QString &part = isBehind ? after : before;
            if (c.unicode() == use.level)
                isBehind = true;
            else if (c.unicode() < rtflist::levels)
                part.append(numberAbove(use, c.unicode(), level.isDecimal, counters));
            else
                part.append(c);
        }
        QTextListFormat format
            = listFormat(level, before, after, counters[static_cast<std::size_t>(use.level)].count);
        format.setProperty(richtext::ListOverride, use.override);
        return format;
    }

    QString numberAbove(const RtfListUse &use, int above, bool isDecimal, const Counters &counters) const
    {
        const RtfListLevel &level = *m_lists.level(use.override, above);
        const int count = counters[static_cast<std::size_t>(above)].count;
        return listNumeral(isDecimal ? QTextListFormat::ListDecimal : level.style(),
                           level.start + std::max(count - 1, 0));
    }

    /// The format of a list that goes on behind `counted` items.
    static QTextListFormat
    listFormat(const RtfListLevel &level, const QString &before, const QString &after, int counted)
    {
        QTextListFormat format;
        format.setIndent(0);
        format.setStyle(level.style());
        if (isNumbered(level)) {
            format.setNumberPrefix(before);
            format.setNumberSuffix(after);
            if (level.start + counted != 1)
                format.setProperty(richtext::ListStart, level.start + counted);
        }
        return format;
    }

    void addToLegacy(QTextCursor &cursor, int legacy)
    {
        const bool goesOn = m_legacy.list && m_legacyIndex == legacy;
        if (!goesOn)
            m_legacy.count = 0;
        if (goesOn && !isFull(m_legacy)) {
            m_legacy.list->add(cursor.block());
        } else {
            const RtfLegacyList &list = m_legacyLists[legacy];
            m_legacy.list
                = cursor.createList(listFormat(list.level, list.before, list.after, m_legacy.count));
            m_legacyIndex = legacy;
        }
        ++m_legacy.count;
    }

    const RtfLists &m_lists;
    const QList<RtfLegacyList> &m_legacyLists;
    QHash<int, Counters> m_counters;
    Counter m_legacy;
    int m_legacyIndex = -1;
    qint64 m_visits = 0;
};

QTextTableFormat tableFormat(const RtfGrid &grid)
{
    QTextTableFormat format;
    QList<QTextLength> widths;
    for (const int width : grid.columnWidths)
        widths.append(QTextLength(QTextLength::FixedLength, exactPixels(width)));
    format.setColumnWidthConstraints(widths);
    format.setLeftMargin(std::max(exactPixels(grid.left), 0.0));
    format.setCellSpacing(0);
    format.setCellPadding(4);
    format.setBorder(grid.hasBorders ? 1 : 0);
    format.setBorderStyle(grid.hasBorders ? QTextFrameFormat::BorderStyle_Solid
                                          : QTextFrameFormat::BorderStyle_None);
    format.setBorderCollapse(true);
    format.setHeaderRowCount(grid.headerRows);
    if (grid.alignment == RtfRowDefinition::Centre)
        format.setAlignment(Qt::AlignHCenter);
    else if (grid.alignment == RtfRowDefinition::Right)
        format.setAlignment(Qt::AlignRight);
    QVariantList definitions;
    int hash = 0;
    for (const QByteArray &definition : grid.rowDefinitions) {
        definitions.append(definition);
        hash = static_cast<int>(qHashMulti(static_cast<size_t>(hash), definition) & 0x7FFFFFFF);
    }
    format.setProperty(richtext::RowDefinitions, definitions);
    format.setProperty(richtext::RawHash, hash);
    return format;
}

QTextCharFormat::VerticalAlignment cellAlignment(RtfCellDefinition::VerticalAlignment alignment)
{
    switch (alignment) {
    case RtfCellDefinition::Middle:
        return QTextCharFormat::AlignMiddle;
    case RtfCellDefinition::Bottom:
        return QTextCharFormat::AlignBottom;
    default:
        return QTextCharFormat::AlignTop;
    }
}

/// Puts one story behind what the document has. Tables within tables wait on a stack of their own, so depth costs
/// no call depth.
class StoryWriter
{
public:
    StoryWriter(QTextCursor &cursor,
                const RtfStory &story,
                const RtfContents &contents,
                ListKeeper &lists,
                DocumentProgress &progress)
        : m_cursor(cursor), m_story(story), m_contents(contents), m_lists(lists), m_progress(progress),
          m_tree(makeRtfTree(story))
    { }

    /// `isFresh`: the cursor's block is empty and no paragraph yet. Returns the same for what was written last;
    /// nothing when cancelled.
    std::optional<bool> write(bool isFresh)
    {
        m_flows.push_back({m_tree.nodes, 0, isFresh});
        bool wasFresh = isFresh;
        while (!m_flows.empty()) {
            if (isCancelled())
                return {};
            if (m_flows.back().next < m_flows.back().nodes.size())
                writeNext();
            else {
                wasFresh = m_flows.back().isFresh;
                m_flows.pop_back();
                continueTable();
            }
        }
        return wasFresh;
    }

private:
    /// The content of the body or of one cell, being written.
    struct Flow {
        RtfTree::Nodes nodes;
        qsizetype next = 0;
        bool isFresh = true;
    };
    /// A table being filled. It stands in the flow below it.
    struct Table {
        std::vector<RtfGrid> grids;
        std::size_t grid = 0;
        std::size_t cell = 0;
        QTextTable *table = nullptr;
    };

    bool isCancelled()
    {
        if (++m_steps % paragraphsBetweenChecks != 0)
            return false;
        return m_progress.cancelled.load(std::memory_order_relaxed);
    }

    void writeNext()
    {
        Flow &flow = m_flows.back();
        const RtfTree::Node node = flow.nodes[flow.next++];
        if (node.isTable)
            beginTable(m_tree.tables[static_cast<std::size_t>(node.index)]);
        else
            writeParagraph(m_story.paragraphs()[static_cast<std::size_t>(node.index)]);
    }

    QTextBlockFormat blockFormat(const RtfParagraph &paragraph) const
    {
        QTextBlockFormat format = m_contents.formats.paragraph(paragraph.format);
        if (paragraph.section >= 0) {
            format.setProperty(richtext::SectionEnd, m_contents.sections[paragraph.section]);
            format.setProperty(richtext::RawHash, rawHash(m_contents.sections[paragraph.section]));
        }
        if (paragraph.note > 0)
            format.setProperty(richtext::NoteId, paragraph.note);
        return format;
    }

    /// The toolkit keeps a cell's spans and look in the format of the end in front of the cell's first paragraph.
    QTextCharFormat besideCell(QTextCharFormat mark) const
    {
        mark.clearBackground();
        mark.clearProperty(QTextFormat::TextVerticalAlignment);
        mark.merge(m_cursor.blockCharFormat());
        return mark;
    }

    void writeParagraph(const RtfParagraph &paragraph)
    {
        Flow &flow = m_flows.back();
        const QTextBlockFormat format = blockFormat(paragraph);
        const QTextCharFormat &mark = m_contents.formats.character(paragraph.markFormat);
        if (flow.isFresh) {
            m_cursor.setBlockFormat(format);
            m_cursor.setBlockCharFormat(m_flows.size() > 1 ? besideCell(mark) : mark);
        } else
            m_cursor.insertBlock(format, mark);
        flow.isFresh = false;
        qint64 length = 1;
        for (qsizetype i = paragraph.firstRun; i < paragraph.firstRun + paragraph.runs; ++i) {
            const RtfRun &run = m_story.runs()[i];
            m_cursor.insertText(m_story.text().mid(run.start, run.length),
                                m_contents.formats.character(run.format));
            length += run.length;
        }
        if (paragraph.list.isNone())
            m_lists.interrupt();
        else
            m_lists.add(m_cursor, paragraph.list);
        m_progress.done += length;
    }

    /// The toolkit begins a table behind the cursor's block. An empty block there must be one of the table's own,
    /// or an empty paragraph would be taken for it.
    void makeRoomForTable()
    {
        Flow &flow = m_flows.back();
        if (!flow.isFresh && m_cursor.block().length() == 1)
            m_cursor.insertBlock(QTextBlockFormat(), QTextCharFormat());
    }

    void beginTable(const RtfTree::Table &table)
    {
        Table open{layOutRtfTable(table, m_contents.rows)};
        if (open.grids.empty())
            return;
        m_tables.push_back(std::move(open));
        beginGrid();
    }

    void beginGrid()
    {
        makeRoomForTable();
        Table &open = m_tables.back();
        const RtfGrid &grid = open.grids[open.grid];
        open.table = m_cursor.insertTable(static_cast<int>(grid.rowDefinitions.size()),
                                          static_cast<int>(grid.columnWidths.size()), tableFormat(grid));
        mergeCells(*open.table, grid);
        formatCells(*open.table, grid);
        open.cell = 0;
        beginCell();
    }

    /// Merges while all cells are empty, from the end, so that the toolkit has little to move.
    static void mergeCells(QTextTable &table, const RtfGrid &grid)
    {
        std::for_each(grid.cells.crbegin(), grid.cells.crend(), [&table](const RtfGrid::Cell &cell) {
            if (cell.rowSpan > 1 || cell.columnSpan > 1)
                table.mergeCells(cell.row, cell.column, cell.rowSpan, cell.columnSpan);
        });
    }

    void formatCells(QTextTable &table, const RtfGrid &grid) const
    {
        for (const RtfGrid::Cell &cell : grid.cells) {
            const QColor background = m_contents.formats.colour(cell.background);
            const bool isPlain = !background.isValid() && cell.verticalAlignment == RtfCellDefinition::Top;
            if (isPlain)
                continue;
            QTextTableCell target = table.cellAt(cell.row, cell.column);
            QTextCharFormat format = target.format();
            if (background.isValid())
                format.setBackground(background);
            format.setVerticalAlignment(cellAlignment(cell.verticalAlignment));
            target.setFormat(format);
        }
    }

    void beginCell()
    {
        const Table &open = m_tables.back();
        const RtfGrid::Cell &cell = open.grids[open.grid].cells[open.cell];
        m_cursor = open.table->cellAt(cell.row, cell.column).firstCursorPosition();
        m_flows.push_back({cell.content, 0, true});
    }

    /// A flow has ended: goes on with the next cell, the next part of the table, or what is behind it.
    void continueTable()
    {
        if (m_tables.empty())
            return;
        Table &open = m_tables.back();
        if (++open.cell < open.grids[open.grid].cells.size()) {
            beginCell();
            return;
        }
        m_cursor = open.table->lastCursorPosition();
        m_cursor.movePosition(QTextCursor::NextCharacter);
        m_flows.back().isFresh = true;
        if (++open.grid < open.grids.size())
            beginGrid();
        else
            m_tables.pop_back();
    }

    QTextCursor &m_cursor;
    const RtfStory &m_story;
    const RtfContents &m_contents;
    ListKeeper &m_lists;
    DocumentProgress &m_progress;
    RtfTree m_tree;
    std::vector<Flow> m_flows;
    std::vector<Table> m_tables;
    int m_steps = 0;
};

} // namespace

bool assembleRtf(RichTextDocument &document, const RtfContents &contents, DocumentProgress &progress)
{
    QTextCursor cursor(&document);
    ListKeeper lists(contents.lists, contents.legacyLists);
    cursor.beginEditBlock();
    std::optional<bool> isFresh = true;
    for (const RtfStory *story : {&contents.body, &contents.notes}) {
        if (isFresh)
            isFresh = StoryWriter(cursor, *story, contents, lists, progress).write(*isFresh);
    }
    cursor.endEditBlock();
    return isFresh.has_value();
}

} // namespace vandrel
