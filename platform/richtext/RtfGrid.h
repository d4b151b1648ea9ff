#pragma once

#include <vector>

#include <QList>

#include "platform/richtext/RtfRows.h"
#include "platform/richtext/RtfStory.h"

namespace vandrel {

/// The paragraphs and tables of a story, ordered as they contain each other. Tables refer to each other by index,
/// so that nothing here is as deep as the document.
struct RtfTree {
    /// A paragraph of the story, or a table of the tree.
    struct Node {
        bool isTable = false;
        qsizetype index = 0;
        bool isEmpty = false; ///< a paragraph without text
    };
    using Nodes = QList<Node>;

    struct Row {
        qsizetype definition = 0;
        QList<Nodes> cells;
    };
    struct Table {
        std::vector<Row> rows;
    };

    Nodes nodes;
    std::vector<Table> tables;
};

RtfTree makeRtfTree(const RtfStory &story);

/// A table as the toolkit can show it: a grid of rows and columns that cells may span.
struct RtfGrid {
    struct Cell {
        int row = 0;
        int column = 0;
        int rowSpan = 1;
        int columnSpan = 1;
        RtfTree::Nodes content;
        int background = -1; ///< colour index
        RtfCellDefinition::VerticalAlignment verticalAlignment = RtfCellDefinition::Top;
    };

    int left = 0; ///< twips
    int headerRows = 0;
    bool hasBorders = false;
    RtfRowDefinition::Alignment alignment = RtfRowDefinition::Left;
    QList<int> columnWidths; ///< twips
    QList<QByteArray> rowDefinitions; ///< as control words, one \cellx for each cell of the row
    std::vector<Cell> cells;
};

/// Lays a table out. Rows whose edges differ share one grid if that is reasonably small; otherwise the table becomes
/// several, one below the other. Cells that the definition lacks are added, and no content is lost.
std::vector<RtfGrid> layOutRtfTable(const RtfTree::Table &table, const QList<RtfRowDefinition> &definitions);

} // namespace vandrel
