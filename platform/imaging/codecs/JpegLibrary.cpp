#include "platform/imaging/codecs/JpegLibrary.h"

namespace vandrel {

namespace {

JpegErrors &errorsOf(j_common_ptr info)
{
    return *static_cast<JpegErrors *>(info->client_data);
}

void onFatalError(j_common_ptr info)
{
    JpegErrors &errors = errorsOf(info);
    info->err->format_message(info, errors.message);
    std::longjmp(errors.onError, 1);
}

/// Counts warnings instead of printing them.
void onMessage(j_common_ptr info, int level)
{
    if (level < 0)
        ++info->err->num_warnings;
}

} // namespace

JpegErrors::JpegErrors()
{
    jpeg_std_error(&manager);
    manager.error_exit = onFatalError;
    manager.emit_message = onMessage;
}

} // namespace vandrel
