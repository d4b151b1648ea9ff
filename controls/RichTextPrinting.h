#pragma once

#include <functional>

#include <QTextCursor>

class QPrinter;

namespace vandrel {

enum class PrintResult {
    Printed,
    /// The caller has ended it; what the device has got so far is incomplete.
    Cancelled,
    /// The device cannot be started, or has failed.
    Failed,
};

/// Prints the cursor's selection, or its whole document when nothing is selected, page by page, as wide as
/// the paper less a margin of 2 cm on every side (more where the device's own margins are wider). Character
/// sizes are true; pictures, links and tables are printed as shown.
///
/// A copy is made first, then the pages are laid out one by one as they are drawn. `goOn` is called every some ten
/// milliseconds with how much is done, 0 to 1, and ends the printing by returning false; the document must not change
/// before the printing has ended.
PrintResult
printRichText(const QTextCursor &selection, QPrinter &device, const std::function<bool(double)> &goOn);

} // namespace vandrel
