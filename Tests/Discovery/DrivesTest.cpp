#include "FakeMachine.h"
#include "Platform/Platform.h"
#include "Support/ScratchDisk.h"

#include <QCoreApplication>
#include <QDir>
#include <QStorageInfo>
#include <QtTest>
#include <algorithm>
#include <atomic>
#include <fcntl.h>
#include <memory>
#include <thread>

using namespace corv;
using corv::test::FakeMachine;
using corv::test::takeOwnMounts;

namespace {

bool hasOwnMounts = false;

/// A mount whose driver is a program, this one, that never answers. Who asks it waits until it is
/// gone.
class SilentMount
{
public:
    explicit SilentMount(const QString& folder) : m_folder(QFile::encodeName(folder))
    {
        m_driver = ::open("/dev/fuse", O_RDWR | O_CLOEXEC);
        const QByteArray options =
            "rootmode=40000,user_id=0,group_id=0,fd=" + QByteArray::number(m_driver);
        m_isMounted = m_driver >= 0 && ::mount("silent", m_folder.constData(), "fuse.silent",
                                               MS_NOSUID | MS_NODEV, options.constData()) == 0;
    }
    ~SilentMount()
    {
        if (m_driver >= 0)
            ::close(m_driver);
        if (m_isMounted)
            ::umount2(m_folder.constData(), MNT_DETACH);
    }
    SilentMount(const SilentMount&) = delete;
    SilentMount& operator=(const SilentMount&) = delete;

    bool isMounted() const { return m_isMounted; }

private:
    const QByteArray m_folder;
    int m_driver = -1;
    bool m_isMounted = false;
};

} // namespace

class DrivesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theDiskDecides_data();
    void theDiskDecides();
    void linksLeadToTheDevice();
    void everyMountedVolumeIsListed();
    void mountsOfPeopleAreVolumes_data();
    void mountsOfPeopleAreVolumes();
    void labelsComeFromTheLinks();
    void aMountThatDoesNotAnswerKeepsNobodyWaiting();

private:
    QList<platform::Volume> volumesOf(const QByteArray& table)
    {
        const QString file = m_machine.addFile(m_machine.path("mounts"), table);
        return platform::volumesOf(file, m_machine.path("dev/disk/by-label"));
    }

    FakeMachine m_machine;
};

void DrivesTest::initTestCase()
{
    FakeMachine& m = m_machine;
    m.addDevice("pci/ata/sda", {{"removable", "0"}});
    m.addDevice("pci/ata/sda/sda1", {{"partition", "1"}, {"removable", "1"}});
    m.addDevice("pci/usb/sdb", {{"removable", "1"}});
    m.addDevice("pci/usb/sdb/sdb1", {{"partition", "1"}});
    m.addDevice("mmc/mmcblk0", {{"removable", "0"}, {"device/type", "SD"}});
    m.addDevice("mmc/mmcblk0/mmcblk0p1", {{"partition", "1"}});
    m.addDevice("mmc/mmcblk1", {{"removable", "0"}, {"device/type", "MMC"}});
    m.addDevice("mmc/mmcblk1/mmcblk1p1", {{"partition", "1"}});
    m.addDevice("virtual/dm-0", {{"removable", "0"}});
    m.addSlave("virtual/dm-0", "pci/usb/sdb/sdb1");
    m.addDevice("virtual/dm-1", {{"removable", "0"}});
    m.addSlave("virtual/dm-1", "virtual/dm-0");
    m.addDevice("virtual/dm-2", {{"removable", "0"}});
    m.addSlave("virtual/dm-2", "pci/ata/sda/sda1");
    m.addDevice("virtual/dm-3", {{"removable", "0"}});
    m.addSlave("virtual/dm-3", "pci/ata/sda/sda1");
    m.addSlave("virtual/dm-3", "pci/usb/sdb/sdb1");
    m.addDevice("virtual/dm-4", {{"removable", "0"}});
    m.addDevice("virtual/dm-5", {{"removable", "0"}});
    m.addSlave("virtual/dm-4", "virtual/dm-5");
    m.addSlave("virtual/dm-5", "virtual/dm-4");
    m.addDevice("raid/cciss!c0d0", {{"removable", "1"}});
    m.addDevice("raid/cciss!c0d0/cciss!c0d0p1", {{"partition", "1"}});
    m.addDevice("old/fd0", {});
}

void DrivesTest::theDiskDecides_data()
{
    QTest::addColumn<QByteArray>("device");
    QTest::addColumn<int>("type");

    const int removable = 2;
    const int fixed = platform::driveFixed;
    const int unknown = platform::driveUnknown;
    QTest::newRow("whole removable disk") << QByteArray("/dev/sdb") << removable;
    QTest::newRow("partition of one") << QByteArray("/dev/sdb1") << removable;
    QTest::newRow("fixed disk") << QByteArray("/dev/sda") << fixed;
    QTest::newRow("the partition has no say") << QByteArray("/dev/sda1") << fixed;
    QTest::newRow("card in a fixed reader") << QByteArray("/dev/mmcblk0p1") << removable;
    QTest::newRow("memory soldered in") << QByteArray("/dev/mmcblk1p1") << fixed;
    QTest::newRow("mapped on removable") << QByteArray("/dev/dm-0") << removable;
    QTest::newRow("mapped twice") << QByteArray("/dev/dm-1") << removable;
    QTest::newRow("mapped on fixed") << QByteArray("/dev/dm-2") << fixed;
    QTest::newRow("mapped on both") << QByteArray("/dev/dm-3") << removable;
    QTest::newRow("mapped in a circle") << QByteArray("/dev/dm-4") << fixed;
    QTest::newRow("slash in the name") << QByteArray("/dev/cciss/c0d0p1") << removable;
    QTest::newRow("no attribute") << QByteArray("/dev/fd0") << fixed;
    QTest::newRow("not in the tree") << QByteArray("/dev/root") << unknown;
    QTest::newRow("no device") << QByteArray("tmpfs") << unknown;
    QTest::newRow("name of a device, but no path") << QByteArray("sdb1") << unknown;
    QTest::newRow("network share") << QByteArray("//server/flights") << unknown;
    QTest::newRow("empty") << QByteArray() << unknown;
    QTest::newRow("folder of devices") << QByteArray("/dev/") << unknown;
}

void DrivesTest::theDiskDecides()
{
    QFETCH(QByteArray, device);
    QFETCH(int, type);
    QCOMPARE(platform::driveType(device, m_machine.sysfsRoot()), type);
}

void DrivesTest::linksLeadToTheDevice()
{
    const QString node = m_machine.addFile(m_machine.path("dev/sdb1"));
    const QString mapped = m_machine.addFile(m_machine.path("dev/dm-2"));
    QVERIFY(QDir().mkpath(m_machine.path("dev/disk/by-label")));
    const QString label = m_machine.path("dev/disk/by-label/CARD");
    const QString mapping = m_machine.path("dev/vault");
    QVERIFY(QFile::link("../../sdb1", label));
    QVERIFY(QFile::link("dm-2", mapping));
    QCOMPARE(platform::driveType(QFile::encodeName(node), m_machine.sysfsRoot()), 2);
    QCOMPARE(platform::driveType(QFile::encodeName(label), m_machine.sysfsRoot()), 2);
    QCOMPARE(platform::driveType(QFile::encodeName(mapped), m_machine.sysfsRoot()),
             platform::driveFixed);
    QCOMPARE(platform::driveType(QFile::encodeName(mapping), m_machine.sysfsRoot()),
             platform::driveFixed);
}

void DrivesTest::everyMountedVolumeIsListed()
{
    const QList<QStorageInfo> mounted = QStorageInfo::mountedVolumes();
    const QList<platform::Volume> volumes = platform::mountedVolumes();
    QCOMPARE(volumes.size(), mounted.size());
    QVERIFY(!volumes.isEmpty());
    for (int i = 0; i < volumes.size(); ++i) {
        QCOMPARE(volumes[i].rootPath, mounted[i].rootPath());
        QCOMPARE(volumes[i].name, mounted[i].name());
        QCOMPARE(volumes[i].device, mounted[i].device());
    }
}

void DrivesTest::mountsOfPeopleAreVolumes_data()
{
    QTest::addColumn<QByteArray>("line");
    QTest::addColumn<QString>("folder"); // empty where it is none

    const auto row = [](const char* name, const QByteArray& line, const QString& folder) {
        QTest::newRow(name) << line + " rw,relatime 0 0\n" << folder;
    };
    const QByteArray here = QFile::encodeName(m_machine.path({}));
    row("root", "overlay / overlay", "/");
    row("device", "/dev/sdb1 /media/card vfat", "/media/card");
    row("device, by a program", "/dev/sdb1 /media/card fuseblk", "/media/card");
    row("blank and tab in the name", "/dev/sdb1 /media/a\\040b\\011c vfat", "/media/a b\tc");
    row("letters", "/dev/sdb1 /media/\xc3\xbc vfat", QString::fromUtf8("/media/\xc3\xbc"));
    row("share of a server", "server:/flights /net/flights nfs4", "/net/flights");
    row("share of a desktop", "//server/flights /net/flights cifs", "/net/flights");
    row("share over ssh", "me@server: /net/flights fuse.sshfs", "/net/flights");
    row("in memory, with room", "tmpfs " + here + " tmpfs", m_machine.path({}));
    row("without room", "none /nowhere/at/all tmpfs", {});
    row("mounted when it is used", "/etc/auto.net /net autofs", {});
    row("of the desktop", "gvfsd-fuse /run/user/1000/gvfs fuse.gvfsd-fuse", {});
    row("devices", "/dev/sdb1 /dev/shm ext4", {});
    row("nearly devices", "/dev/sdb1 /devices ext4", "/devices");
    row("processes", "/dev/sdb1 /proc ext4", {});
}

void DrivesTest::mountsOfPeopleAreVolumes()
{
    QFETCH(QByteArray, line);
    QFETCH(QString, folder);
    const QList<platform::Volume> volumes = volumesOf(line);
    QCOMPARE(volumes.size(), folder.isEmpty() ? 0 : 1);
    if (volumes.isEmpty())
        return;
    QCOMPARE(volumes.first().rootPath, folder);
    QCOMPARE(volumes.first().device, line.split(' ').first());
}

// The links have the device's node at their end; a blank in the label has a code.
void DrivesTest::labelsComeFromTheLinks()
{
    QVERIFY(QDir().mkpath(m_machine.path("dev/disk/by-label")));
    const QString link = m_machine.path("dev/disk/by-label/CORV\\x20\\x41\\xzz");
    QVERIFY(QFile::link("/dev/null", link));
    QVERIFY(QFile::link("/dev/nowhere", m_machine.path("dev/disk/by-label/GONE")));
    const QList<platform::Volume> volumes =
        volumesOf("/dev/null /media/card vfat rw 0 0\n/dev/zero /media/other vfat rw 0 0\n"
                  "server:/a /net/a nfs rw 0 0\n");
    QCOMPARE(volumes.size(), 3);
    QCOMPARE(volumes[0].name, QString("CORV A\\xzz"));
    QCOMPARE(volumes[1].name, QString());
    QCOMPARE(volumes[2].name, QString());
}

void DrivesTest::aMountThatDoesNotAnswerKeepsNobodyWaiting()
{
    const QString folder = m_machine.path("silent");
    QVERIFY(QDir().mkpath(folder));
    auto mount = std::make_unique<SilentMount>(folder);
    if (!hasOwnMounts || !mount->isMounted())
        QSKIP("no file system of a program can be mounted here");
    std::atomic<bool> isListed{false};
    QList<platform::Volume> volumes;
    std::thread listing([&] {
        volumes = platform::mountedVolumes();
        isListed = true;
    });
    const bool hasEnded = QTest::qWaitFor([&] { return isListed.load(); }, 30'000);
    mount.reset(); // ends every wait for it
    listing.join();
    QVERIFY(hasEnded);
    QVERIFY(std::any_of(volumes.begin(), volumes.end(), [&folder](const platform::Volume& volume) {
        return volume.rootPath == folder;
    }));
}

int main(int argc, char** argv)
{
    hasOwnMounts = takeOwnMounts();
    QCoreApplication application(argc, argv);
    DrivesTest test;
    return QTest::qExec(&test, argc, argv);
}
#include "DrivesTest.moc"
