#include "platform/imaging/operations/Operation.h"

#include <new>

#include <opencv2/core.hpp>

namespace vandrel {

OperationProgress remaining(const OperationProgress &whole, int done)
{
    if (!whole)
        return {};
    whole(done);
    return [whole, done](int percent) { whole(done + percent * (100 - done) / 100); };
}

Outcome refused(const Subject &subject)
{
    return {false, subject.picture};
}

Outcome unchanged(const Subject &subject)
{
    return {true, subject.picture};
}

PixelArea workingArea(const Subject &subject)
{
    const Raster &picture = subject.picture;
    return subject.area ? clipped(*subject.area, picture.width(), picture.height()) : picture.area();
}

bool coversPicture(const PixelArea &area, const Raster &picture)
{
    return area == picture.area();
}

Outcome refusingOnFailure(const Subject &subject, const std::function<Outcome()> &operation)
{
    if (workingArea(subject).isEmpty())
        return refused(subject);
    try {
        return operation();
    } catch (const cv::Exception &) {
        return refused(subject);
    } catch (const std::bad_alloc &) {
        return refused(subject);
    }
}

} // namespace vandrel
