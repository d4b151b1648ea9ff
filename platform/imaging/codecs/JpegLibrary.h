#pragma once

#include <csetjmp>
#include <cstdio>

#include <jpeglib.h>

namespace vandrel {

/// Where the library goes on a fatal error. It jumps, so that the frames it leaves behind
/// may own nothing.
struct JpegErrors {
    jpeg_error_mgr manager{};
    std::jmp_buf onError{};
    /// The library's sentence about the error.
    char message[JMSG_LENGTH_MAX] = {};

    JpegErrors();
};

/// Runs calls of the library; false when one of them failed. `calls` must own nothing.
template<typename Calls>
bool withoutJpegError(JpegErrors &errors, Calls calls)
{
    if (setjmp(errors.onError) != 0)
        return false;
    calls();
    return true;
}

} // namespace vandrel
