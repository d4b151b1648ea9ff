#pragma once

#include <memory>

#include "controls/CImage.h"
#include "controls/CommonDialog.h"
#include "controls/DriveView.h"

namespace vandrel {

/// The controls that do the picture editor's heavy work. All must be given.
struct PictureEditorControls {
    /// The file image: what was loaded and what is saved and printed.
    std::unique_ptr<CImage> c1;
    /// The working image: what the commands process and what is shown.
    std::unique_ptr<CImage> c2;
    /// The Open dialog.
    std::unique_ptr<CommonDialog> cd1;
    /// The Save As dialog.
    std::unique_ptr<CommonDialog> cd2;
    /// Where the current folder is kept.
    std::shared_ptr<DriveView> drives;
};

} // namespace vandrel
