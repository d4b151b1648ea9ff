#include "platform/mail/mime/MimeLibrary.h"

#include <mutex>

#include <gmime/gmime.h>

namespace vandrel {

void ensureMimeLibrary()
{
    static std::once_flag started;
    std::call_once(started, g_mime_init);
}

} // namespace vandrel
