#pragma once

class QPainter;
class QPalette;
class QTextBlock;
class QTextCharFormat;

namespace vandrel {

/// Draws the bullet or the number of a laid out paragraph that belongs to a list, before its first line;
/// nothing for any other paragraph. `selection` is the look of a selected marker, null for one that is not.
void drawListMarker(QPainter *painter,
                    const QTextBlock &block,
                    const QPalette &palette,
                    const QTextCharFormat *selection);

} // namespace vandrel
