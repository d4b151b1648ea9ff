#pragma once

#include <functional>

#include <QTextCursor>

class QPagedPaintDevice;

namespace vandrel {

/// Prints the cursor's selection, or its whole document when nothing is selected, page by page, as wide as
/// the paper less a margin of 2 cm on every side (more where the device's own margins are wider). Character
/// sizes are true; pictures, links and tables are printed as shown.
///
/// `betweenPages` is called before each page but the first. Returns false when the device cannot be started.
bool printRichText(const QTextCursor &selection,
                   QPagedPaintDevice &device,
                   const std::function<void()> &betweenPages);

} // namespace vandrel
