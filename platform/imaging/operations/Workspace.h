#pragma once

#include <memory>

#include "platform/imaging/operations/Operation.h"

namespace vandrel {

/// Whether an operation on grays alone gives grays alone.
enum class GrayResult { StaysGray, TakesColour };

/// A picture as an operation on values needs it, not on palette numbers: one octet a pixel for a picture of 8 bits
/// whose palette and result are gray, else blue, green, red (and alpha). Raises std::bad_alloc.
Raster asValues(const Raster &picture, GrayResult result);

/// What an operation that keeps the picture's size reads from and writes to.
class Workspace
{
public:
    /// Raises std::bad_alloc. The subject's area must not be empty.
    Workspace(const Subject &subject, GrayResult result);

    ConstPixelView source() const { return m_source.view(); }
    PixelView target() { return m_target->view(); }
    const PixelArea &area() const { return m_area; }
    const OperationProgress &progress() const { return m_progress; }
    /// How many of the octets of a pixel are colour; those behind are alpha.
    int colours() const { return m_source.view().channels == 1 ? 1 : 3; }

    /// Alpha as it was, five-bit values where the picture has those: the result.
    Outcome finish();

private:
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
