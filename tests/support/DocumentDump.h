#pragma once

#include <QString>
#include <QTextDocument>

namespace vandrel {

/// A document as text, a line a paragraph, cell, row or run, with everything that its formats say. Two
/// documents that a reader could not tell apart give the same text: resource names, the numbers of fields and
/// the internal indices of the toolkit are told by what they refer to.
QString dumpOf(const QTextDocument &document);

/// The first line in which two dumps differ, of both; empty when they are equal.
QString firstDifference(const QString &left, const QString &right);

} // namespace vandrel
