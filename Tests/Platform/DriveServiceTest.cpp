#include "Platform/DriveService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

using corv::platform::DriveService;

/// A method of a played object: name, signatures of arguments and answer, code.
struct MockMethod
{
    QString name, in, out, code;
};
Q_DECLARE_METATYPE(MockMethod)
using InterfaceMap = QMap<QString, QVariantMap>;
Q_DECLARE_METATYPE(InterfaceMap)

QDBusArgument& operator<<(QDBusArgument& argument, const MockMethod& method)
{
    argument.beginStructure();
    argument << method.name << method.in << method.out << method.code;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MockMethod& method)
{
    argument.beginStructure();
    argument >> method.name >> method.in >> method.out >> method.code;
    argument.endStructure();
    return argument;
}

namespace {

const QString kService = QStringLiteral("org.freedesktop.UDisks2");
const QString kRoot = QStringLiteral("/org/freedesktop/UDisks2");
const QString kBus = QStringLiteral("test");
const QString kMock = QStringLiteral("org.freedesktop.DBus.Mock");

QByteArray asPath(const QByteArray& path)
{
    return path + '\0';
}

} // namespace

/// Against a service that plays the system's, on a bus of its own.
class DriveServiceTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void cleanup();
    void withoutTheServiceNothingIsKnown();
    void drivesSayWhetherTheyCanBePulled_data();
    void drivesSayWhetherTheyCanBePulled();
    void anEncryptedVolumeIsOnItsDrive();
    void linksNameTheDeviceToo();
    void cardsThatComeAndGoAreReportedOnce();
    void mountingIsReported();

private:
    QDBusMessage mock(const QString& path, const char* method, const QVariantList& arguments);
    void add(const QString& path, const QString& interface, const QVariantMap& properties);
    void addDrive(const QString& name, const QVariantMap& properties);
    void addBlock(const QString& name, const QVariantMap& properties);

    QProcess m_bus;
    std::unique_ptr<QProcess> m_service;
    QString m_address;
    std::unique_ptr<QDBusConnection> m_connection;
};

void DriveServiceTest::initTestCase()
{
    qDBusRegisterMetaType<MockMethod>();
    qDBusRegisterMetaType<QList<MockMethod>>();
    qDBusRegisterMetaType<InterfaceMap>();
    m_bus.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    QVERIFY2(m_bus.waitForStarted(), "dbus-daemon is missing");
    QTRY_VERIFY(m_bus.canReadLine());
    m_address = QString::fromUtf8(m_bus.readLine().trimmed());
}

void DriveServiceTest::cleanupTestCase()
{
    m_bus.kill();
    m_bus.waitForFinished();
}

void DriveServiceTest::init()
{
    m_connection =
        std::make_unique<QDBusConnection>(QDBusConnection::connectToBus(m_address, kBus));
    QVERIFY(m_connection->isConnected());
    if (QString(QTest::currentTestFunction()).startsWith("without"))
        return;
    m_service = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("DBUS_SESSION_BUS_ADDRESS", m_address);
    m_service->setProcessEnvironment(environment);
    m_service->start("/usr/bin/python3", {"-m", "dbusmock", "--session", "--is-object-manager",
                                          kService, kRoot, kService + ".Manager"});
    QVERIFY(m_service->waitForStarted());
    QTRY_VERIFY(m_connection->interface()->isServiceRegistered(kService).value());
}

void DriveServiceTest::cleanup()
{
    if (m_service) {
        m_service->kill();
        m_service->waitForFinished();
        m_service.reset();
        QTRY_VERIFY(!m_connection->interface()->isServiceRegistered(kService).value());
    }
    m_connection.reset();
    QDBusConnection::disconnectFromBus(kBus);
}

QDBusMessage DriveServiceTest::mock(const QString& path, const char* method,
                                    const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(kService, path, kMock, method);
    call.setArguments(arguments);
    const QDBusMessage answer = m_connection->call(call);
    if (answer.type() == QDBusMessage::ErrorMessage)
        qWarning("%s: %s", method, qPrintable(answer.errorMessage()));
    return answer;
}

void DriveServiceTest::add(const QString& path, const QString& interface,
                           const QVariantMap& properties)
{
    const QDBusMessage answer =
        mock(kRoot, "AddObject",
             {path, interface, properties, QVariant::fromValue(QList<MockMethod>())});
    QVERIFY(answer.type() == QDBusMessage::ReplyMessage);
}

void DriveServiceTest::addDrive(const QString& name, const QVariantMap& properties)
{
    add(kRoot + "/drives/" + name, kService + ".Drive", properties);
}

void DriveServiceTest::addBlock(const QString& name, const QVariantMap& properties)
{
    QVariantMap all = properties;
    all.insert("Device", asPath("/dev/" + name.toUtf8()));
    add(kRoot + "/block_devices/" + name, kService + ".Block", all);
}

void DriveServiceTest::withoutTheServiceNothingIsKnown()
{
    const DriveService drives(kBus);
    QVERIFY(drives.removableDevices().isEmpty());
    const DriveService nowhere(QStringLiteral("no such bus"));
    QVERIFY(nowhere.removableDevices().isEmpty());
}

void DriveServiceTest::drivesSayWhetherTheyCanBePulled_data()
{
    QTest::addColumn<QVariantMap>("drive");
    QTest::addColumn<bool>("removable");
    QTest::newRow("disk") << QVariantMap{{"Removable", false}, {"MediaRemovable", false}} << false;
    QTest::newRow("stick") << QVariantMap{{"Removable", true}} << true;
    QTest::newRow("card in a reader") << QVariantMap{{"MediaRemovable", true}} << true;
    QTest::newRow("card on the board")
        << QVariantMap{{"Removable", false}, {"ConnectionBus", "sdio"}} << true;
    QTest::newRow("nothing said") << QVariantMap{{"Vendor", "x"}} << false;
}

void DriveServiceTest::drivesSayWhetherTheyCanBePulled()
{
    QFETCH(QVariantMap, drive);
    QFETCH(bool, removable);
    addDrive("d", drive);
    addBlock("sda1", {{"Drive", QVariant::fromValue(QDBusObjectPath(kRoot + "/drives/d"))}});
    const QHash<QByteArray, bool> known = DriveService(kBus).removableDevices();
    QCOMPARE(known, (QHash<QByteArray, bool>{{"/dev/sda1", removable}}));
}

void DriveServiceTest::anEncryptedVolumeIsOnItsDrive()
{
    addDrive("d", {{"Removable", true}});
    addBlock("sda1", {{"Drive", QVariant::fromValue(QDBusObjectPath(kRoot + "/drives/d"))}});
    const QDBusObjectPath none("/");
    addBlock("dm_0", {{"Drive", QVariant::fromValue(none)},
                      {"CryptoBackingDevice",
                       QVariant::fromValue(QDBusObjectPath(kRoot + "/block_devices/sda1"))}});
    // Damage: a device that lies on itself.
    addBlock("dm_1", {{"Drive", QVariant::fromValue(none)},
                      {"CryptoBackingDevice",
                       QVariant::fromValue(QDBusObjectPath(kRoot + "/block_devices/dm_1"))}});
    const QHash<QByteArray, bool> known = DriveService(kBus).removableDevices();
    QCOMPARE(known.value("/dev/dm_0"), true);
    QCOMPARE(known.contains("/dev/dm_1"), true);
    QCOMPARE(known.value("/dev/dm_1"), false);
}

void DriveServiceTest::linksNameTheDeviceToo()
{
    addDrive("d", {{"Removable", true}});
    qDBusRegisterMetaType<QList<QByteArray>>();
    const QList<QByteArray> links = {asPath("/dev/disk/by-label/CARD")};
    addBlock("sda1", {{"Drive", QVariant::fromValue(QDBusObjectPath(kRoot + "/drives/d"))},
                      {"Symlinks", QVariant::fromValue(links)}});
    const QHash<QByteArray, bool> known = DriveService(kBus).removableDevices();
    QCOMPARE(known.value("/dev/disk/by-label/CARD"), true);
}

void DriveServiceTest::cardsThatComeAndGoAreReportedOnce()
{
    const DriveService drives(kBus);
    QSignalSpy changed(&drives, &DriveService::changed);
    const auto report = [this](const char* signal, const char* signature, const QString& name,
                               const QVariant& interfaces) {
        const QDBusObjectPath path(kRoot + "/block_devices/" + name);
        mock(kRoot, "EmitSignal",
             {"org.freedesktop.DBus.ObjectManager", signal, signature,
              QVariantList{QVariant::fromValue(path), interfaces}});
    };
    const QVariant added = QVariant::fromValue(InterfaceMap());
    report("InterfacesAdded", "oa{sa{sv}}", "sda", added);
    report("InterfacesAdded", "oa{sa{sv}}", "sda1", added);
    QTRY_COMPARE(changed.size(), 1);
    report("InterfacesRemoved", "oas", "sda1", QStringList(kService + ".Block"));
    QTRY_COMPARE(changed.size(), 2);
}

void DriveServiceTest::mountingIsReported()
{
    const QString path = kRoot + "/block_devices/sda1";
    add(path, kService + ".Filesystem", {{"MountPoints", QByteArray()}});
    const DriveService drives(kBus);
    QSignalSpy changed(&drives, &DriveService::changed);
    mock(path, "UpdateProperties",
         {kService + ".Filesystem", QVariantMap{{"MountPoints", asPath("/media/CARD")}}});
    QTRY_COMPARE(changed.size(), 1);
}

QTEST_GUILESS_MAIN(DriveServiceTest)
#include "DriveServiceTest.moc"
