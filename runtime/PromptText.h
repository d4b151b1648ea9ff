#pragma once

#include <QString>

class QDialog;
class QWidget;

namespace vandrel {

/// The text of a box, as plain text whatever it looks like. A short text is a label; one that is too long for
/// the screen, or has words too long for a line, scrolls in a read-only text view that wraps anywhere. In both
/// the text can be selected and copied. The widget's object name is "text"; a view's accessible name is
/// "Message".
///
/// Longer than a million characters, the text is cut there and says so; a line of more than some thousands is
/// broken. `screenOf` tells the screen and the font to reckon with, and becomes the parent.
QWidget *makePromptText(const QString &text, QWidget *screenOf);

/// Keeps a box within its screen's available area, with room for the window's frame.
void keepOnScreen(QDialog *box);

} // namespace vandrel
