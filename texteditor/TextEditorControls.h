#pragma once

#include <memory>

#include <QStringList>

#include "controls/CommonDialog.h"
#include "controls/DocumentFiles.h"
#include "controls/Printer.h"
#include "controls/blsColorDialog.h"

namespace vandrel {

/// The families of the fonts of this screen, each once, without the makers' names that the toolkit adds: the
/// name is written into documents, where other programs look it up.
QStringList screenFontFamilies();

/// The controls that do the text editor's heavy work. All must be given.
struct TextEditorControls {
    /// The Open dialog.
    std::unique_ptr<CommonDialog> cd1;
    /// The Save As dialog.
    std::unique_ptr<CommonDialog> cd2;
    std::unique_ptr<blsColorDialog> c1;
    std::shared_ptr<Printer> printer;
    /// Reads and writes the documents' files.
    std::shared_ptr<const DocumentFiles> files;
    /// The families offered by the list of fonts, in its order.
    QStringList screenFonts = screenFontFamilies();
};

} // namespace vandrel
