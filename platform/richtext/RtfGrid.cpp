#include "platform/richtext/RtfGrid.h"

#include <algorithm>

namespace vandrel {

namespace {

constexpr int defaultCellWidth = 1440;
/// Edges of cells in different rows that are nearer than this, in twips, are the same edge.
constexpr int edgeTolerance = 30;
constexpr qsizetype mostSharedColumns = 64;
/// A table is divided into so many; one that changes its edges more often is shown with columns of equal cells.
constexpr std::size_t mostParts = 100;
/// Merging cells costs the toolkit time in proportion to the whole table each time.
constexpr qint64 mostMergeWork = 100'000'000;

/// Builds the tree from the flat list of items. One entry of the stack for each table that is open.
class TreeBuilder
{
public:
    explicit TreeBuilder(const RtfStory &story) : m_story(story) { }

    RtfTree build()
    {
        for (const RtfItem &item : m_story.items()) {
            switch (item.kind) {
            case RtfItem::Paragraph:
                setDepth(item.depth);
                content().append({false, item.index, isEmpty(item)});
                break;
            case RtfItem::CellEnd:
                setDepth(item.depth);
                endCell();
                break;
            case RtfItem::RowEnd:
                setDepth(item.depth);
                endRow(item.index);
                break;
            }
        }
        setDepth(0);
        return std::move(m_tree);
    }

private:
    struct Open {
        qsizetype table = 0;
        RtfTree::Row row;
        RtfTree::Nodes cell;
    };

    bool isEmpty(const RtfItem &paragraph) const
    {
        return m_story.paragraphs()[static_cast<std::size_t>(paragraph.index)].runs == 0;
    }

    RtfTree::Nodes &content() { return m_open.empty() ? m_tree.nodes : m_open.back().cell; }

    void setDepth(std::size_t depth)
    {
        while (m_open.size() > depth)
            closeTable();
        while (m_open.size() < depth)
            openTable();
    }

    void openTable()
    {
        const auto table = static_cast<qsizetype>(m_tree.tables.size());
        content().append({true, table, false});
        m_tree.tables.emplace_back();
        m_open.push_back({table, {}, {}});
    }

    void closeTable()
    {
        if (isOnlyContent()) {
            const RtfTree::Nodes inside = m_open.back().cell;
            m_open.pop_back();
            content().removeLast();
            content().append(inside);
            return;
        }
        // What was begun and not ended is a cell and a row all the same.
        if (!m_open.back().cell.isEmpty())
            endCell();
        if (!m_open.back().row.cells.isEmpty())
            endRow(-1);
        m_open.pop_back();
    }

    /// Paragraphs said to be in a table where no cell and no row ever ends are ordinary paragraphs.
    bool isOnlyContent() const
    {
        const Open &open = m_open.back();
        return open.row.cells.isEmpty() && m_tree.tables[static_cast<std::size_t>(open.table)].rows.empty();
    }

    void endCell()
    {
        Open &open = m_open.back();
        open.row.cells.append(open.cell);
        open.cell.clear();
    }

    void endRow(qsizetype definition)
    {
        if (!m_open.back().cell.isEmpty())
            endCell();
        Open &open = m_open.back();
        open.row.definition = definition;
        m_tree.tables[static_cast<std::size_t>(open.table)].rows.push_back(std::move(open.row));
        open.row = {};
    }

    const RtfStory &m_story;
    RtfTree m_tree;
    std::vector<Open> m_open;
};

/// A row with as many definitions as cells, horizontal merges done.
struct Row {
    RtfRowDefinition definition;
    QList<RtfTree::Nodes> cells;
};

RtfCellDefinition surplusCell(const RtfRowDefinition &row)
{
    const qsizetype count = row.cells.size();
    const int left = count > 0 ? row.cells.last().right : row.left;
    const int before = count > 1 ? row.cells[count - 2].right : row.left;
    RtfCellDefinition cell;
    cell.right = left + (count > 0 ? left - before : defaultCellWidth);
    return cell;
}

/// A cell that is covered by another one holds an empty paragraph, as every cell does; anything else in it is moved
/// to the cell that covers it.
void appendMerged(RtfTree::Nodes &to, const RtfTree::Nodes &content)
{
    if (content.size() != 1 || !content.first().isEmpty)
        to.append(content);
}

Row normalised(const RtfTree::Row &source, const RtfRowDefinition &definition)
{
    Row row;
    row.definition = definition;
    row.definition.cells.clear();
    const qsizetype count = std::max(source.cells.size(), definition.cells.size());
    for (qsizetype i = 0; i < count; ++i) {
        const bool isDefined = i < definition.cells.size();
        const RtfCellDefinition cell = isDefined ? definition.cells[i] : surplusCell(row.definition);
        const RtfTree::Nodes content = source.cells.value(i);
        if (cell.mergedLeft && i > 0) {
            row.definition.cells.last().right = cell.right;
            appendMerged(row.cells.last(), content);
        } else {
            row.definition.cells.append(cell);
            row.cells.append(content);
        }
    }
    return row;
}

/// Left edge of the row and right edges of its cells.
QList<int> edgesOf(const Row &row)
{
    QList<int> edges{row.definition.left};
    for (const RtfCellDefinition &cell : row.definition.cells)
        edges.append(cell.right);
    return edges;
}

using Rows = std::vector<Row>;

/// Lays out the rows from `first` to before `last` on the grid of `lines`, ordered edges in twips.
class GridBuilder
{
public:
    GridBuilder(const Rows &rows, std::size_t first, std::size_t last, QList<int> lines)
        : m_rows(rows), m_first(first), m_last(last), m_lines(std::move(lines))
    { }

    RtfGrid build()
    {
        describe();
        m_merges = isMergeable(verticalMerges());
        m_cellAbove.assign(static_cast<std::size_t>(m_lines.size()), -1);
        for (std::size_t row = m_first; row < m_last; ++row)
            addRow(m_rows[row], static_cast<int>(row - m_first));
        return std::move(m_grid);
    }

private:
    void describe()
    {
        const RtfRowDefinition &first = m_rows[m_first].definition;
        m_grid.left = m_lines.first();
        m_grid.alignment = first.alignment;
        for (qsizetype i = 1; i < m_lines.size(); ++i)
            m_grid.columnWidths.append(m_lines[i] - m_lines[i - 1]);
        bool onlyHeaders = true;
        for (std::size_t row = m_first; row < m_last; ++row) {
            const RtfRowDefinition &definition = m_rows[row].definition;
            m_grid.rowDefinitions.append(definition.toRtf());
            m_grid.hasBorders = m_grid.hasBorders || definition.hasBorders;
            onlyHeaders = onlyHeaders && definition.isHeader;
            m_grid.headerRows += onlyHeaders ? 1 : 0;
        }
    }

    qint64 verticalMerges() const
    {
        qint64 count = 0;
        for (std::size_t row = m_first; row < m_last; ++row) {
            const QList<RtfCellDefinition> &cells = m_rows[row].definition.cells;
            count
                += std::count_if(cells.begin(), cells.end(), [](const auto &cell) { return cell.mergedUp; });
        }
        return count;
    }

    bool isMergeable(qint64 merges) const
    {
        return merges * static_cast<qint64>(m_last - m_first) * m_grid.columnWidths.size() <= mostMergeWork;
    }

    int lineNear(int edge) const
    {
        const auto found = std::lower_bound(m_lines.begin(), m_lines.end(), edge - edgeTolerance + 1);
        return static_cast<int>(std::min<qsizetype>(found - m_lines.begin(), m_lines.size() - 1));
    }

    void addRow(const Row &row, int rowNumber)
    {
        std::vector<int> cellAbove(m_cellAbove.size(), -1);
        int from = 0;
        const qsizetype count = row.cells.size();
        for (qsizetype i = 0; i < count; ++i) {
            const RtfCellDefinition &definition = row.definition.cells[i];
            const bool isLast = i + 1 == count;
            const int to = isLast ? static_cast<int>(m_lines.size()) - 1 : lineNear(definition.right);
            cellAbove[static_cast<std::size_t>(from)]
                = place(definition, row.cells[i], rowNumber, from, to - from);
            from = to;
        }
        m_cellAbove = std::move(cellAbove);
    }

    /// Puts one cell on the grid, or adds it to the one above; returns the cell's index.
    int
    place(const RtfCellDefinition &definition, const RtfTree::Nodes &content, int row, int column, int span)
    {
        const int above = m_cellAbove[static_cast<std::size_t>(column)];
        if (m_merges && definition.mergedUp && above >= 0) {
            RtfGrid::Cell &cell = m_grid.cells[static_cast<std::size_t>(above)];
            if (cell.columnSpan == span) {
                ++cell.rowSpan;
                appendMerged(cell.content, content);
                return above;
            }
        }
        return add(definition, content, row, column, span);
    }

    int add(const RtfCellDefinition &definition, const RtfTree::Nodes &content, int row, int column, int span)
    {
        RtfGrid::Cell cell;
        cell.row = row;
        cell.column = column;
        cell.columnSpan = span;
        cell.content = content;
        cell.background = definition.background;
        cell.verticalAlignment = definition.verticalAlignment;
        m_grid.cells.push_back(cell);
        return static_cast<int>(m_grid.cells.size()) - 1;
    }

    const Rows &m_rows;
    std::size_t m_first;
    std::size_t m_last;
    QList<int> m_lines;
    RtfGrid m_grid;
    std::vector<int> m_cellAbove;
    bool m_merges = true;
};

/// The edges of all rows together, those that are nearly the same taken as one.
QList<int> sharedLines(const Rows &rows)
{
    QList<int> edges;
    for (const Row &row : rows)
        edges.append(edgesOf(row));
    std::sort(edges.begin(), edges.end());
    QList<int> lines;
    for (const int edge : std::as_const(edges)) {
        if (lines.isEmpty() || edge - lines.last() >= edgeTolerance)
            lines.append(edge);
    }
    return lines;
}

bool isWorthSharing(const Rows &rows, const QList<int> &lines)
{
    const qint64 columns = lines.size() - 1;
    qint64 cells = 0;
    for (const Row &row : rows)
        cells += row.cells.size();
    return columns <= mostSharedColumns
        && cells * columns * static_cast<qint64>(rows.size()) <= mostMergeWork;
}

/// The row behind the last one that has the same edges as row `first`.
std::size_t endOfPart(const Rows &rows, std::size_t first)
{
    const QList<int> edges = edgesOf(rows[first]);
    std::size_t last = first + 1;
    while (last < rows.size() && edgesOf(rows[last]) == edges)
        ++last;
    return last;
}

std::size_t countParts(const Rows &rows)
{
    std::size_t parts = 0;
    for (std::size_t first = 0; first < rows.size(); first = endOfPart(rows, first))
        ++parts;
    return parts;
}

/// Gives a row the edges of one that has at least as many cells.
void adoptEdges(Row &row, const RtfRowDefinition &widest)
{
    row.definition.left = widest.left;
    for (qsizetype i = 0; i < widest.cells.size(); ++i) {
        if (i >= row.cells.size()) {
            row.definition.cells.append(RtfCellDefinition());
            row.cells.append(RtfTree::Nodes());
        }
        row.definition.cells[i].right = widest.cells[i].right;
    }
}

/// Gives neighbouring rows the edges of the longest one among them, as long as that does not add too many empty
/// cells.
void makeEven(Rows &rows)
{
    for (std::size_t first = 0; first < rows.size();) {
        qsizetype cells = 0;
        qsizetype columns = 0;
        std::size_t widest = first;
        std::size_t last = first;
        for (; last < rows.size(); ++last) {
            const qsizetype rowCells = rows[last].cells.size();
            const qsizetype area = static_cast<qsizetype>(last - first + 1) * std::max(columns, rowCells);
            if (area > 4 * (cells + rowCells) + 1000)
                break;
            widest = rowCells > columns ? last : widest;
            columns = std::max(columns, rowCells);
            cells += rowCells;
        }
        const RtfRowDefinition edges = rows[widest].definition;
        for (std::size_t row = first; row < last; ++row)
            adoptEdges(rows[row], edges);
        first = last;
    }
}

Rows normalisedRows(const RtfTree::Table &table, const QList<RtfRowDefinition> &definitions)
{
    Rows rows;
    for (const RtfTree::Row &source : table.rows) {
        Row row = normalised(source, definitions.value(source.definition));
        if (!row.cells.isEmpty())
            rows.push_back(std::move(row));
    }
    return rows;
}

} // namespace

RtfTree makeRtfTree(const RtfStory &story)
{
    return TreeBuilder(story).build();
}

std::vector<RtfGrid> layOutRtfTable(const RtfTree::Table &table, const QList<RtfRowDefinition> &definitions)
{
    Rows rows = normalisedRows(table, definitions);
    if (rows.empty())
        return {};
    if (const QList<int> lines = sharedLines(rows); isWorthSharing(rows, lines))
        return {GridBuilder(rows, 0, rows.size(), lines).build()};
    if (countParts(rows) > mostParts)
        makeEven(rows);
    std::vector<RtfGrid> grids;
    for (std::size_t first = 0; first < rows.size();) {
        const std::size_t last = endOfPart(rows, first);
        grids.push_back(GridBuilder(rows, first, last, edgesOf(rows[first])).build());
        first = last;
    }
    return grids;
}

} // namespace vandrel
