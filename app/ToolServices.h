#pragma once

#include <functional>
#include <memory>

#include "controls/CommonDialog.h"
#include "controls/DocumentFiles.h"
#include "controls/DriveView.h"
#include "controls/LocalFolders.h"
#include "controls/Printer.h"
#include "runtime/WindowSlot.h"

namespace vandrel {

/// The adapters of the program itself that a module's tools share with it; none is null. User-interface thread only.
struct ToolServices {
    std::shared_ptr<DriveView> drives;
    std::shared_ptr<LocalFolders> folders;
    std::shared_ptr<DocumentFiles> documents;
    /// Makes one file dialog.
    std::function<std::unique_ptr<CommonDialog>()> commonDialog;
    std::shared_ptr<Printer> printer;
    /// The one thumbnails window.
    WindowSlot *thumbnails = nullptr;
};

} // namespace vandrel
