#pragma once

#include <QString>
#include <QStringView>
#include <QTextBlock>
#include <QTextCursor>

class QTextDocument;

namespace vandrel {

/// Long paragraphs of a plain text, kept by the document as several pieces: the toolkit lays out a paragraph as a whole
/// after each key, which takes too long where one holds a million characters. A division between two pieces is a
/// paragraph end in the document and nothing in the text. It is marked in the document, so that undoing and redoing
/// keep it what it is.

/// Whether a paragraph of the document goes on with the text of the one before it.
bool continuesParagraph(const QTextBlock &block);

/// Whether a paragraph of that text has to be divided.
bool hasLongParagraph(QStringView text);

/// Puts plain text in the place of the selection, long paragraphs divided, as one step that can be undone. The mark of a
/// division next to it does not pass on to its own paragraph ends, as the toolkit's own insertion would have it.
void insertDivided(QTextCursor cursor, QStringView text);

/// Puts the divisions around the `count` characters from `position` on in order: what has become too long is divided,
/// pieces that have become short are joined. It is undone with the change before it where that was an edit block, as a
/// step of its own where it was a lone character. False when they were in order.
bool tidyDivisions(QTextDocument &document, int position, int count);

/// Whether one character more or less in that block may put the divisions out of order.
bool isAtBoundOfDivision(const QTextBlock &block);

/// The text of so many of the document's characters, with CR LF for each paragraph end.
QString dividedText(const QTextDocument &document, int position, int count);

/// How many characters of that text lie before a position of the document.
qsizetype dividedTextBefore(const QTextDocument &document, int position);

} // namespace vandrel
