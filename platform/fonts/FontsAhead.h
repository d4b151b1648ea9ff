#pragma once

#include <future>

namespace vandrel {

/// Reads which fonts the system has and how they are to be shown, on a thread of its own. The toolkit, which would do so
/// when it shows its first text, finds it done. To be made before the application object, so that both happen at
/// once; waits for the thread when it goes.
class FontsAhead
{
public:
    FontsAhead();

    /// Waits until they are read; false where they cannot be, which the toolkit then finds out as well.
    [[nodiscard]] bool wait() { return m_read.get(); }

private:
    std::future<bool> m_read;
};

} // namespace vandrel
