#pragma once

#include <memory>

#include <QtPlugin>

#include "app/ToolServices.h"

namespace vandrel {

/// The adapters that the tools of every module share, made once for the whole suite. User-interface thread only.
class SharedAdapters
{
public:
    SharedAdapters() = default;
    SharedAdapters(const SharedAdapters &) = delete;
    SharedAdapters &operator=(const SharedAdapters &) = delete;
    virtual ~SharedAdapters() = default;

    /// What one more tool is made with: the drives as they are now, and the window of thumbnails that it opens.
    virtual ToolServices services(WindowSlot &thumbnails) = 0;
};

/// The module that has them. Implemented by its root object, beside ToolModule.
class SharedAdaptersModule
{
public:
    virtual ~SharedAdaptersModule() = default;

    virtual std::unique_ptr<SharedAdapters> makeAdapters() = 0;
};

} // namespace vandrel

Q_DECLARE_INTERFACE(vandrel::SharedAdaptersModule, "io.github.vandrel.SharedAdaptersModule/1.0")
