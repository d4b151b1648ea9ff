#include "platform/filesystem/LinuxDriveTable.h"

#include <array>
#include <utility>

#include <fcntl.h>
#include <pwd.h>
#include <unistd.h>

#include "platform/filesystem/LinuxMounts.h"
#include "runtime/Events.h"

namespace vandrel {

namespace {

constexpr char firstLetter = 'd';
constexpr char lastLetter = 'y';

// Far more than any table of mounts; a longer one is read in part.
constexpr qsizetype longestTable = 8 * 1024 * 1024;

// What the system's table of users says; an entry whose texts are longer than any real ones counts as none.
QByteArray homeOfUser()
{
    passwd entry{};
    std::array<char, 16 * 1024> texts{};
    passwd *found = nullptr;
    getpwuid_r(getuid(), &entry, texts.data(), texts.size(), &found);
    return found ? found->pw_dir : "/";
}

QByteArray homeFolder()
{
    const QByteArray home = qgetenv("HOME");
    return home.startsWith('/') ? home : homeOfUser();
}

} // namespace

std::unique_ptr<DriveTable> DriveTable::create(DriveView &view)
{
    return std::make_unique<LinuxDriveTable>(view);
}

LinuxDriveTable::LinuxDriveTable(DriveView &view, QByteArray mountInfo)
    : m_view(view), m_mountInfo(std::move(mountInfo))
{
    m_view.setDrive('c', homeFolder());
    m_view.setDrive('z', "/");
}

LinuxDriveTable::~LinuxDriveTable()
{
    m_changes.reset();
    if (m_table >= 0)
        close(m_table);
}

void LinuxDriveTable::follow()
{
    if (m_table >= 0)
        return;
    m_table = open(m_mountInfo.constData(), O_RDONLY | O_CLOEXEC);
    if (m_table < 0)
        return;
    // The kernel reports a changed table as an exceptional condition of the open file.
    m_changes = std::make_unique<QSocketNotifier>(m_table, QSocketNotifier::Exception);
    onEvent(m_changes.get(), &QSocketNotifier::activated, this, [this] { refresh(); });
    refresh();
}

void LinuxDriveTable::refresh()
{
    const auto before = m_view.drives();
    const QByteArrayList points = driveMounts(readTable());
    for (const auto &[point, letter] : m_letters) {
        if (!points.contains(point))
            m_view.removeDrive(letter);
    }
    for (const QByteArray &point : points) {
        if (const char letter = letterFor(point))
            m_view.setDrive(letter, point);
    }
    if (m_view.drives() != before)
        Q_EMIT changed();
}

QByteArray LinuxDriveTable::readTable() const
{
    QByteArray table;
    QByteArray piece(64 * 1024, Qt::Uninitialized);
    while (table.size() < longestTable) {
        const ssize_t got = pread(m_table, piece.data(), std::size_t(piece.size()), table.size());
        if (got <= 0)
            break;
        table.append(piece.constData(), got);
    }
    return table;
}

// The letter of a mount point, given at its first sight; 0 when there is none left.
char LinuxDriveTable::letterFor(const QByteArray &mountPoint)
{
    const auto known = m_letters.find(mountPoint);
    if (known != m_letters.end())
        return known->second;
    const int next = firstLetter + static_cast<int>(m_letters.size());
    if (next > lastLetter)
        return 0;
    return m_letters[mountPoint] = static_cast<char>(next);
}

} // namespace vandrel
