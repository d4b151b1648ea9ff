#pragma once

#include <QString>
#include <QTextListFormat>

class QPainter;
class QPalette;
class QTextBlock;
class QTextCharFormat;

namespace vandrel {

/// The number as a list of that style counts: "12", "xii", "l". What a style has no sign for (numbers below one,
/// Roman ones from 5000 on, letters behind 32767) is decimal.
QString listNumeral(QTextListFormat::Style style, int number);

/// What stands before item `index` (from 0) of a list: its number, counted from richtext::ListStart, between the
/// format's prefix and suffix; a bullet's character; nothing for a list without either.
QString listMarkerText(const QTextListFormat &format, int index);

/// Whether lists of that style have bullets.
bool isBullet(QTextListFormat::Style style);

/// Draws the bullet or the number of a laid out paragraph that belongs to a list, before its first line;
/// nothing for any other paragraph. `selection` is the look of a selected marker, null for one that is not.
void drawListMarker(QPainter *painter,
                    const QTextBlock &block,
                    const QPalette &palette,
                    const QTextCharFormat *selection);

} // namespace vandrel
