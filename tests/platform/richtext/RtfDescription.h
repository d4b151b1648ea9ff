#pragma once

#include <QString>
#include <QTextCharFormat>

#include "controls/DocumentFiles.h"

namespace vandrel::test {

/// Reads RTF; a failure is the caller's.
LoadedDocument load(const QByteArray &rtf);

/// Reads the RTF whose body is given.
LoadedDocument loadBody(const QByteArray &body);

/// The text: "\n" between paragraphs, "[" before a cell, "]" behind a table, "#" for an object, "|" for a line end.
QString shownText(const QTextDocument &document);
QString shownText(const QByteArray &body);

/// The runs of the first paragraph as "text{format}", for the parts of the format that differ from plain 12 points.
QString shownRuns(const QTextDocument &document);
QString shownRuns(const QByteArray &body);

/// The format of the first run that contains `text`.
QTextCharFormat formatOf(const QTextDocument &document, const QString &text);

} // namespace vandrel::test
