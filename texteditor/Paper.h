#pragma once

class QWidget;

namespace vandrel {

/// Gives a widget the colours of paper, whatever the desktop's are: white, with black for text without a colour of
/// its own. A document's colours are chosen for paper; dark headings and marked words are unreadable otherwise.
void showAsPaper(QWidget *widget);

} // namespace vandrel
