#pragma once

#include <QByteArray>
#include <QList>
#include <QTextTable>

#include "platform/richtext/RtfWriterTables.h"

namespace vandrel {

/// The cells of a table's row from left to right, one for each \cell it is written with. A cell that began in a
/// row above is among them; one that spans columns is there once.
QList<QTextTableCell> rtfRowCells(const QTextTable &table, int row);

/// The definition of a row, "\trowd ... \cellxN": the loaded one where it still fits the row, else one made
/// from the table's format.
QByteArray rtfRowDefinition(const QTextTable &table, int row, RtfWriterTables &tables);

} // namespace vandrel
