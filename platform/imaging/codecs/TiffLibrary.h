#pragma once

#include <memory>

#include <QIODevice>
#include <tiffio.h>

namespace vandrel {

struct CloseTiff {
    void operator()(TIFF *tiff) const { TIFFClose(tiff); }
};
using TiffHandle = std::unique_ptr<TIFF, CloseTiff>;

/// What the library complained about first.
struct TiffComplaints {
    QString first;
    bool hasErrors = false;
};

/// Opens a TIFF file on a device that can go to any position; `mode` as the library has it. The device and the
/// complaints must stay as long as the handle. Null where the device holds none.
TiffHandle openTiff(QIODevice &device, const char *mode, TiffComplaints &complaints);

} // namespace vandrel
