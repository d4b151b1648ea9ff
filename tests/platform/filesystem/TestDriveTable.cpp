#include <pwd.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "platform/filesystem/LinuxDriveTable.h"
#include "platform/filesystem/LinuxMounts.h"

using namespace vandrel;

namespace {

using Drives = std::map<char, QByteArray>;

QByteArray line(const char *point, const char *type, const char *source)
{
    return QByteArray("36 35 98:0 / ") + point + " rw,noatime shared:1 master:2 - " + type + ' ' + source
        + " rw,errors=continue\n";
}

void write(const QString &path, const QByteArray &text)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(text), text.size());
}

} // namespace

class TestDriveTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void mountsThatAreDrives_data();
    void mountsThatAreDrives();
    void aLaterMountHidesAnEarlierOne();
    void escapedMountPointsAreRead();
    void malformedLinesArePassedOver_data();
    void malformedLinesArePassedOver();

    void homeAndRootAreThereFromTheStart();
    void aHomeThatIsNoPathIsReplaced();
    void lettersAreFixedForTheRun();
    void moreMountsThanLetters();
    void anUnreadableTableLeavesHomeAndRoot();
    void theSystemsOwnTableIsRead();
    void aChangedTableIsNoticed();

private:
    std::unique_ptr<QTemporaryDir> m_folder;
    QString m_table;
};

void TestDriveTable::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    m_table = m_folder->filePath(QStringLiteral("mountinfo"));
    qputenv("HOME", "/home/user");
}

void TestDriveTable::mountsThatAreDrives_data()
{
    QTest::addColumn<QByteArray>("table");
    QTest::addColumn<bool>("isDrive");

    QTest::newRow("stick") << line("/media/user/stick", "vfat", "/dev/sdb1") << true;
    QTest::newRow("stick of a newer desktop") << line("/run/media/user/stick", "exfat", "/dev/sdb1") << true;
    QTest::newRow("disk mounted by hand") << line("/mnt/disk", "ext4", "/dev/sdc1") << true;
    QTest::newRow("disc") << line("/cdrom", "iso9660", "/dev/sr0") << true;
    QTest::newRow("network file system") << line("/srv/x", "nfs4", "server:/x") << true;
    QTest::newRow("network share") << line("/home/user/share", "cifs", "//server/x") << true;
    QTest::newRow("secure shell") << line("/home/user/far", "fuse.sshfs", "user@far:") << true;
    QTest::newRow("folder of the host") << line("/shared", "virtiofs", "shared") << true;
    QTest::newRow("root") << line("/", "ext4", "/dev/sda1") << false;
    QTest::newRow("root over the network") << line("/", "nfs", "server:/") << false;
    QTest::newRow("home partition") << line("/home", "ext4", "/dev/sda2") << false;
    QTest::newRow("boot partition") << line("/boot/efi", "vfat", "/dev/sda3") << false;
    QTest::newRow("program package") << line("/snap/a/1", "squashfs", "/dev/loop3") << false;
    QTest::newRow("memory") << line("/media/x", "tmpfs", "tmpfs") << false;
    QTest::newRow("kernel") << line("/proc", "proc", "proc") << false;
    QTest::newRow("mount folder itself") << line("/mnt/", "ext4", "/dev/sdc1") << false;
}

void TestDriveTable::mountsThatAreDrives()
{
    QFETCH(QByteArray, table);
    QFETCH(bool, isDrive);

    QCOMPARE(driveMounts(table).size(), isDrive ? 1 : 0);
}

void TestDriveTable::aLaterMountHidesAnEarlierOne()
{
    const QByteArray stick = line("/media/a", "vfat", "/dev/sdb1");
    QCOMPARE(driveMounts(stick + stick), QByteArrayList{"/media/a"});
    QCOMPARE(driveMounts(stick + line("/media/a", "tmpfs", "tmpfs")), QByteArrayList{});
}

void TestDriveTable::escapedMountPointsAreRead()
{
    QCOMPARE(driveMounts(line("/media/my\\040stick\\134x\\9", "vfat", "/dev/sdb1")),
             QByteArrayList{"/media/my stick\\x\\9"});
    QCOMPARE(driveMounts(line("/media/caf\xE9", "vfat", "/dev/sdb1")), QByteArrayList{"/media/caf\xE9"});
}

void TestDriveTable::malformedLinesArePassedOver_data()
{
    QTest::addColumn<QByteArray>("bad");

    QTest::newRow("empty") << QByteArray("\n");
    QTest::newRow("short") << QByteArray("36 35 98:0\n");
    QTest::newRow("no dash") << QByteArray("36 35 98:0 / /media/b rw shared:1 vfat /dev/sdb1 rw\n");
    QTest::newRow("nothing after the dash") << QByteArray("36 35 98:0 / /media/b rw -\n");
    QTest::newRow("type only") << QByteArray("36 35 98:0 / /media/b rw - nfs\n");
    QTest::newRow("relative") << line("media/b", "nfs", "server:/");
    QTest::newRow("NUL") << line("/media/b\\000c", "nfs", "server:/");
    QTest::newRow("rubbish") << QByteArray("\xFF\x00\\\\\\- - - -\n", 13);
}

void TestDriveTable::malformedLinesArePassedOver()
{
    QFETCH(QByteArray, bad);

    const QByteArray good = line("/media/a", "vfat", "/dev/sdb1");
    QCOMPARE(driveMounts(bad + good + bad), QByteArrayList{"/media/a"});
}

void TestDriveTable::homeAndRootAreThereFromTheStart()
{
    DriveView view;
    const auto table = DriveTable::create(view);
    QCOMPARE(view.drives(), (Drives{{'c', "/home/user"}, {'z', ""}}));
    QCOMPARE(view.currentDrive(), 'c');
}

void TestDriveTable::aHomeThatIsNoPathIsReplaced()
{
    qputenv("HOME", "nonsense");
    DriveView view;
    const LinuxDriveTable table(view, QFile::encodeName(m_table));
    const passwd *user = getpwuid(getuid());
    DriveView expected;
    expected.setDrive('c', user ? user->pw_dir : "/");
    QCOMPARE(view.drives().at('c'), expected.drives().at('c'));
}

void TestDriveTable::lettersAreFixedForTheRun()
{
    const QByteArray a = line("/media/a", "vfat", "/dev/sdb1");
    const QByteArray b = line("/media/b", "vfat", "/dev/sdc1");
    const QByteArray c = line("/media/c", "vfat", "/dev/sdd1");
    DriveView view;
    LinuxDriveTable table(view, QFile::encodeName(m_table));
    QSignalSpy changed(&table, &DriveTable::changed);

    write(m_table, b + a);
    table.follow();
    QCOMPARE(view.drives(), (Drives{{'c', "/home/user"}, {'d', "/media/b"}, {'e', "/media/a"}, {'z', ""}}));
    QCOMPARE(changed.size(), 1);
    table.refresh();
    QCOMPARE(changed.size(), 1);

    write(m_table, a + c);
    table.refresh();
    QCOMPARE(view.drives(), (Drives{{'c', "/home/user"}, {'e', "/media/a"}, {'f', "/media/c"}, {'z', ""}}));
    QCOMPARE(changed.size(), 2);

    write(m_table, a + b + c);
    table.refresh();
    QCOMPARE(view.drives().at('d'), QByteArray("/media/b"));
    QCOMPARE(changed.size(), 3);
}

void TestDriveTable::moreMountsThanLetters()
{
    QByteArray text;
    for (int i = 0; i < 30; ++i)
        text += line(("/media/m" + QByteArray::number(i)).constData(), "vfat", "/dev/sdb1");
    write(m_table, text);
    DriveView view;
    LinuxDriveTable table(view, QFile::encodeName(m_table));
    table.follow();
    QCOMPARE(view.drives().size(), std::size_t{24});
    QCOMPARE(view.drives().at('y'), QByteArray("/media/m21"));
    QCOMPARE(view.toDos("/media/m22/x"), QStringLiteral("z:\\media\\m22\\x"));
}

void TestDriveTable::anUnreadableTableLeavesHomeAndRoot()
{
    DriveView view;
    LinuxDriveTable table(view, QFile::encodeName(m_table));
    table.follow();
    QCOMPARE(view.drives().size(), std::size_t{2});
}

void TestDriveTable::theSystemsOwnTableIsRead()
{
    QFile own(QStringLiteral("/proc/self/mountinfo"));
    QVERIFY(own.open(QIODevice::ReadOnly));
    const qsizetype drives = driveMounts(own.readAll()).size();

    DriveView view;
    const auto table = DriveTable::create(view);
    table->follow();
    QCOMPARE(view.drives().size(), std::size_t(2 + std::min<qsizetype>(drives, 22)));
}

void TestDriveTable::aChangedTableIsNoticed()
{
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        QSKIP("This user may not mount anything.");

    DriveView view;
    const auto table = DriveTable::create(view);
    table->follow();
    const std::size_t before = view.drives().size();
    QSignalSpy changed(table.get(), &DriveTable::changed);
    QCOMPARE(mount("tmpfs", "/mnt", "tmpfs", 0, nullptr), 0);
    QVERIFY(QDir().mkpath(QStringLiteral("/mnt/stick")));
    QCOMPARE(mount("/dev/stick", "/mnt/stick", "tmpfs", 0, nullptr), 0);
    QTRY_COMPARE(view.drives().size(), before + 1);
    const QString shown = view.toDos("/mnt/stick/x");
    QVERIFY(shown.endsWith(u":\\x"_qs));
    QVERIFY(!changed.isEmpty());

    QCOMPARE(umount("/mnt/stick"), 0);
    QTRY_COMPARE(view.drives().size(), before);
}

QTEST_GUILESS_MAIN(TestDriveTable)
#include "TestDriveTable.moc"
