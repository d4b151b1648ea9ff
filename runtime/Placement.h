#pragma once

#include <QFont>
#include <QString>

class QWidget;

namespace vandrel {

/// Moves and sizes `widget` within its parent, in twips. A box too narrow for its own caption is made wider
/// (never higher), so that no text is cut whatever font and style are in force.
void placeInTwips(QWidget *widget, int left, int top, int width, int height);

/// A font of a stated family and size. The size is in points at 96 dots per inch, as the positions in twips
/// are, so that text and boxes keep their proportions on every screen. Where the family is not installed, the one
/// that SuiteApplication puts in its place is the font's family.
struct StatedFont {
    QString family;
    double points;
    bool bold = false;
    bool italic = false;
};
QFont fontOf(const StatedFont &stated);

} // namespace vandrel
