#pragma once

#include <memory>

#include "platform/imaging/operations/Operation.h"
#include "platform/imaging/operations/ValueRows.h"

namespace vandrel {

/// Whether an operation on grays alone gives grays alone.
enum class GrayResult { StaysGray, TakesColour };

/// How many octets a pixel has in an operation on values, not on palette numbers: one for a picture of 8 bits whose palette
/// and result are gray, else blue, green, red (and alpha).
int channelsOfValues(const Raster &picture, GrayResult result);
/// A picture of such pixels, made of one in some respects the same: an indexed one has other pixels now.
Raster withValues(const Raster &picture, std::shared_ptr<const PixelBuffer> values);

/// A copy of a picture's pixels, made by all processors. Raises std::bad_alloc.
std::shared_ptr<PixelBuffer> copiedInBands(const Raster &picture);

/// What an operation that keeps the picture's size reads from and writes to.
class Workspace
{
public:
    /// Raises std::bad_alloc. The subject's area must not be empty.
    Workspace(const Subject &subject, GrayResult result);

    /// The picture's rows, for one band or thread.
    ValueRows source() const { return ValueRows(m_source, channels()); }
    const Raster &picture() const { return m_source; }
    PixelView target() { return m_target->view(); }
    /// Where a row of the area begins in the target.
    std::uint8_t *targetRow(int y) { return target().at(m_area.left, y); }
    const PixelArea &area() const { return m_area; }
    const OperationProgress &progress() const { return m_progress; }
    /// Octets a pixel, in source and target.
    int channels() const { return m_target->channels(); }

    /// Alpha as it was, five-bit values where the picture has those: the result.
    Outcome finish();

private:
    /// Copies the picture into the target, for the pixels outside of the area.
    void takeOver(int first, int end);
    void restoreAlpha(int first, int end);
    void requantise(int first, int end);

    Raster m_source;
    std::shared_ptr<PixelBuffer> m_target;
    PixelArea m_area;
    OperationProgress m_progress;
};

/// Runs `work` on the subject's workspace; failures are refusals.
Outcome operate(const Subject &subject, GrayResult result, const std::function<void(Workspace &)> &work);

} // namespace vandrel
