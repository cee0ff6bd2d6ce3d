#include "Platform/DriveService.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusReply>
#include <QMap>
#include <QString>
#include <QStringList>
#include <QVariantMap>

using Interfaces = QMap<QString, QVariantMap>;
using ManagedObjects = QMap<QDBusObjectPath, Interfaces>;
using ByteStrings = QList<QByteArray>;

Q_DECLARE_METATYPE(Interfaces)
Q_DECLARE_METATYPE(ManagedObjects)

namespace corv::platform {
namespace {

constexpr int longestAnswerMs = 1000;
constexpr int settlingMs = 300; // a card brings a drive, its partitions and a mount in turn

const QString service = QStringLiteral("org.freedesktop.UDisks2");
const QString rootPath = QStringLiteral("/org/freedesktop/UDisks2");
const QString objectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString blockInterface = QStringLiteral("org.freedesktop.UDisks2.Block");
const QString driveInterface = QStringLiteral("org.freedesktop.UDisks2.Drive");
const QString filesystemInterface = QStringLiteral("org.freedesktop.UDisks2.Filesystem");

// Mapped devices can lie on mapped devices, but not in circles: deeper than this is damage.
constexpr int deepestMapping = 16;

QString pathIn(const QVariantMap& properties, const char* name)
{
    return properties.value(QLatin1String(name)).value<QDBusObjectPath>().path();
}

// The service ends paths with a zero byte.
QByteArray withoutEnd(QByteArray path)
{
    while (path.endsWith('\0'))
        path.chop(1);
    return path;
}

bool canBePulled(const QVariantMap& drive)
{
    // A reader soldered to the board is not removable, but the card in it is.
    return drive.value(QStringLiteral("Removable")).toBool() ||
           drive.value(QStringLiteral("MediaRemovable")).toBool() ||
           drive.value(QStringLiteral("ConnectionBus")).toString() == QLatin1String("sdio");
}

// An encrypted volume is on the device that holds it.
bool isRemovable(const ManagedObjects& objects, const QVariantMap& block, int depth)
{
    const QDBusObjectPath drive(pathIn(block, "Drive"));
    if (objects.contains(drive))
        return canBePulled(objects.value(drive).value(driveInterface));
    const QDBusObjectPath backing(pathIn(block, "CryptoBackingDevice"));
    return depth < deepestMapping && objects.contains(backing) &&
           isRemovable(objects, objects.value(backing).value(blockInterface), depth + 1);
}

QList<QByteArray> namesOf(const QVariantMap& block)
{
    QList<QByteArray> names{withoutEnd(block.value(QStringLiteral("Device")).toByteArray())};
    const QVariant links = block.value(QStringLiteral("Symlinks"));
    if (links.canConvert<QDBusArgument>())
        names += qdbus_cast<ByteStrings>(links.value<QDBusArgument>());
    for (QByteArray& name : names)
        name = withoutEnd(name);
    return names;
}

} // namespace

DriveService::DriveService(QObject* parent)
    : DriveService(QDBusConnection::systemBus().name(), parent)
{
}

DriveService::DriveService(const QString& bus, QObject* parent) : QObject(parent), m_bus(bus)
{
    qDBusRegisterMetaType<Interfaces>();
    qDBusRegisterMetaType<ManagedObjects>();
    qDBusRegisterMetaType<ByteStrings>();
    m_settled.setSingleShot(true);
    m_settled.setInterval(settlingMs);
    connect(&m_settled, &QTimer::timeout, this, &DriveService::changed);
    QDBusConnection connection(m_bus);
    if (!connection.isConnected())
        return;
    const auto listen = [this, &connection](const QString& interface, const char* signal,
                                            const QStringList& first) {
        connection.connect(service, QString(), interface, QLatin1String(signal), first, QString(),
                           this, SLOT(noteChange()));
    };
    listen(objectManager, "InterfacesAdded", {});
    listen(objectManager, "InterfacesRemoved", {});
    listen(QStringLiteral("org.freedesktop.DBus.Properties"), "PropertiesChanged",
           {filesystemInterface});
}

QHash<QByteArray, bool> DriveService::removableDevices() const
{
    QHash<QByteArray, bool> removable;
    const QDBusConnection connection(m_bus);
    if (!connection.isConnected())
        return removable;
    const QDBusMessage question = QDBusMessage::createMethodCall(
        service, rootPath, objectManager, QStringLiteral("GetManagedObjects"));
    const QDBusReply<ManagedObjects> answer =
        connection.call(question, QDBus::Block, longestAnswerMs);
    if (!answer.isValid())
        return removable;
    const ManagedObjects objects = answer.value();
    for (const Interfaces& interfaces : objects) {
        const auto block = interfaces.constFind(blockInterface);
        if (block == interfaces.constEnd())
            continue;
        const bool pulled = isRemovable(objects, *block, 0);
        const QList<QByteArray> names = namesOf(*block);
        for (const QByteArray& name : names)
            removable.insert(name, pulled);
    }
    return removable;
}

void DriveService::noteChange()
{
    m_settled.start();
}

} // namespace corv::platform
