#pragma once

#include <memory>

#include <gmime/gmime.h>

namespace vandrel {

struct MimeUnref {
    void operator()(void *object) const { g_object_unref(object); }
};

/// Owns one reference to an object of the MIME library.
template<typename Type>
using MimeObject = std::unique_ptr<Type, MimeUnref>;

struct MimeFree {
    void operator()(void *memory) const { g_free(memory); }
};

/// Owns a text allocated by the MIME library.
using MimeString = std::unique_ptr<char, MimeFree>;

} // namespace vandrel
