#include "FakeMachine.h"
#include "Platform/Platform.h"

#include <QDir>
#include <QStorageInfo>
#include <QtTest>

using namespace corv;
using corv::test::FakeMachine;

class DrivesTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void theDiskDecides_data();
    void theDiskDecides();
    void linksLeadToTheDevice();
    void everyMountedVolumeIsListed();

private:
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

QTEST_GUILESS_MAIN(DrivesTest)
#include "DrivesTest.moc"
