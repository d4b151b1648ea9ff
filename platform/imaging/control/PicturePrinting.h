#pragma once

#include <QRect>

#include "platform/imaging/control/LongWork.h"
#include "platform/imaging/raster/Raster.h"

class QPrinter;

namespace vandrel {

/// Prints a part of a picture, wholly inside it, in the middle of one page: in the size that its resolution gives it,
/// smaller where the page is. False where the printer cannot be drawn on. Usable on any thread; the printer is used by
/// no other meanwhile.
bool printPicture(const Raster &picture, const QRect &part, QPrinter &printer, WorkProgress &progress);

} // namespace vandrel
