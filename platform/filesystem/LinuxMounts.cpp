#include "platform/filesystem/LinuxMounts.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <vector>

namespace vandrel {

namespace {

struct Mount {
    QByteArray point;
    QByteArray type;
    QByteArray source;
};

constexpr std::array<std::string_view, 20> sharedTypes{"9p",
                                                       "afs",
                                                       "ceph",
                                                       "cifs",
                                                       "coda",
                                                       "davfs",
                                                       "fuse.curlftpfs",
                                                       "fuse.davfs2",
                                                       "fuse.gvfsd-fuse",
                                                       "fuse.rclone",
                                                       "fuse.sshfs",
                                                       "fuse.vmhgfs-fuse",
                                                       "glusterfs",
                                                       "fuse.glusterfs",
                                                       "ncpfs",
                                                       "nfs",
                                                       "nfs4",
                                                       "smb3",
                                                       "vboxsf",
                                                       "virtiofs"};
constexpr std::array<std::string_view, 2> discTypes{"iso9660", "udf"};
constexpr std::array<std::string_view, 3> mountFolders{"/media/", "/run/media/", "/mnt/"};

template<std::size_t N>
bool isOneOf(const QByteArray &text, const std::array<std::string_view, N> &known)
{
    return std::find(known.begin(), known.end(), std::string_view(text.constData(), std::size_t(text.size())))
        != known.end();
}

bool isOctal(char c)
{
    return c >= '0' && c <= '7';
}

// Blanks, tabs, line feeds and backslashes stand as three octal digits after a backslash.
QByteArray unescaped(const QByteArray &field)
{
    QByteArray text;
    for (qsizetype i = 0; i < field.size(); ++i) {
        const bool isEscape = field[i] == '\\' && i + 3 < field.size() && isOctal(field[i + 1])
            && isOctal(field[i + 2]) && isOctal(field[i + 3]);
        if (isEscape) {
            text += static_cast<char>((field[i + 1] - '0') * 64 + (field[i + 2] - '0') * 8
                                      + (field[i + 3] - '0'));
            i += 3;
        } else {
            text += field[i];
        }
    }
    return text;
}

// Six fixed fields, any number of optional ones, a dash, then type, source and options.
bool parse(const QByteArray &line, Mount &mount)
{
    const QByteArrayList fields = line.split(' ');
    const qsizetype dash = fields.indexOf("-", 6);
    if (dash < 0 || dash + 2 >= fields.size())
        return false;
    mount = {unescaped(fields[4]), unescaped(fields[dash + 1]), unescaped(fields[dash + 2])};
    return mount.point.startsWith('/') && !mount.point.contains('\0');
}

bool isBelowAMountFolder(const QByteArray &point)
{
    return std::any_of(mountFolders.begin(), mountFolders.end(), [&point](std::string_view folder) {
        const QByteArray prefix(folder.data(), qsizetype(folder.size()));
        return point.size() > prefix.size() && point.startsWith(prefix);
    });
}

bool isDrive(const Mount &mount)
{
    if (mount.point == "/")
        return false;
    if (isOneOf(mount.type, sharedTypes))
        return true;
    return isOneOf(mount.type, discTypes)
        || (mount.source.startsWith("/dev/") && isBelowAMountFolder(mount.point));
}

} // namespace

QByteArrayList driveMounts(const QByteArray &mountInfo)
{
    std::vector<Mount> mounts;
    for (const QByteArray &line : mountInfo.split('\n')) {
        Mount mount;
        if (!parse(line, mount))
            continue;
        // What is mounted later hides what was mounted on the same folder before.
        std::erase_if(mounts, [&mount](const Mount &earlier) { return earlier.point == mount.point; });
        mounts.push_back(mount);
    }
    QByteArrayList points;
    for (const Mount &mount : mounts) {
        if (isDrive(mount))
            points += mount.point;
    }
    return points;
}

} // namespace vandrel
