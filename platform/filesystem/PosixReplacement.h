#pragma once

#include <cerrno>
#include <optional>

#include <sys/stat.h>

#include <QByteArray>

namespace vandrel {

/// The new file that takes a target's place once it is complete: it is written in the target's folder, under a temporary
/// name or without any. Symbolic links on the way to the target are followed. Whatever ends the object before place()
/// takes the new file away and leaves the target as it was.
///
/// Every function that returns an int returns the system's error number (errno), 0 for success. Usable on any one
/// thread.
class PosixReplacement
{
public:
    explicit PosixReplacement(QByteArray target) : m_target(std::move(target)) { }
    ~PosixReplacement() { discard(); }
    PosixReplacement(const PosixReplacement &) = delete;
    PosixReplacement &operator=(const PosixReplacement &) = delete;

    /// Follows the links to the target and looks at it. EISDIR for a folder, ENODEV for anything else that is no plain
    /// file, EACCES for a file that may not be written or whose mode lets nobody write.
    int examine();
    /// Makes the temporary file, open for writing. `mode` is cut down by the process's mask.
    int makeTemporary(mode_t mode);
    /// Makes a file without a name, open for writing, which nobody sees and which takes no lock on its folder. Fails
    /// where the system or the folder's file system knows no such files. What is needed is the target's folder alone, so
    /// that examine() may follow.
    int makeNameless(mode_t mode);
    /// Has the file system store what it still holds back, as far as closing a file does that: network file systems
    /// report what they could not store only then. The temporary file is closed, a nameless one stays open.
    int close();
    /// Gives the nameless file the target's name, links not followed, if nothing has that name; else EEXIST.
    int name();
    /// Puts the file, after close(), in the target's place as examine() found it, over what has its name by now.
    int place();
    /// Makes the new name itself durable, where the file system can do that.
    void syncFolder() const;
    void discard();

    /// The target behind all links.
    const QByteArray &target() const { return m_target; }
    /// The target as it was found; nothing when there was none.
    const std::optional<struct stat> &old() const { return m_old; }
    /// The open new file, -1 when there is none.
    int file() const { return m_file; }

private:
    int followLinks();
    int link(const QByteArray &name) const;

    QByteArray m_target;
    std::optional<struct stat> m_old;
    QByteArray m_temporary;
    int m_file = -1;
    bool m_isNameless = false;
};

/// Calls that a signal interrupted are simply made again.
template<typename Call>
auto uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR)
        result = call();
    return result;
}

/// Gives an open file the extended attributes of another, access control lists among them, but not those that vouch for
/// its contents or grant it capabilities. Best effort: not every file system has attributes, and not every user may
/// set each of them.
void copyAttributes(const QByteArray &from, int to);

} // namespace vandrel
