#include "FakeMachine.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtGlobal>
#include <algorithm>

namespace corv::test {
namespace {

void mustHold(bool done, const char* what)
{
    if (!done)
        qFatal("the fake machine could not %s", what);
}

} // namespace

FakeMachine::FakeMachine()
{
    mustHold(QDir().mkpath(sysfsRoot() + QStringLiteral("/class/block")), "make its device tree");
}

QString FakeMachine::addFile(const QString& path, const QByteArray& content)
{
    mustHold(QDir().mkpath(QFileInfo(path).path()), "make a folder");
    QFile file(path);
    mustHold(file.open(QIODevice::WriteOnly) && file.write(content) == content.size(),
             "write a file");
    return path;
}

void FakeMachine::addDevice(const QString& place, const QHash<QString, QByteArray>& attributes)
{
    const QString folder = sysfsRoot() + QStringLiteral("/devices/") + place;
    mustHold(QDir().mkpath(folder), "make a device");
    for (auto it = attributes.begin(); it != attributes.end(); ++it)
        addFile(folder + QLatin1Char('/') + it.key(), it.value() + '\n');
    const QString name = QFileInfo(place).fileName();
    mustHold(QFile::link(QStringLiteral("../../devices/") + place,
                         sysfsRoot() + QStringLiteral("/class/block/") + name),
             "list a device");
}

void FakeMachine::addSlave(const QString& place, const QString& slavePlace)
{
    const QString devices = sysfsRoot() + QStringLiteral("/devices/");
    const QString slaves = devices + place + QStringLiteral("/slaves");
    mustHold(QDir().mkpath(slaves), "make a list of slaves");
    mustHold(QFile::link(devices + slavePlace,
                         slaves + QLatin1Char('/') + QFileInfo(slavePlace).fileName()),
             "list a slave");
}

QString FakeMachine::addDrive(const QString& folderName, const QString& label, bool removable)
{
    const QString disk = QStringLiteral("sd") + QLatin1Char(static_cast<char>('a' + m_disks++));
    const QString place = QStringLiteral("usb/block/") + disk;
    addDevice(place, {{QStringLiteral("removable"), removable ? "1" : "0"}});
    addDevice(place + QLatin1Char('/') + disk + QLatin1Char('1'),
              {{QStringLiteral("partition"), "1"}});
    const QString root = path(QStringLiteral("media/") + folderName);
    mustHold(QDir().mkpath(root), "mount a drive");
    m_volumes.append(
        {label, root, QFile::encodeName(QStringLiteral("/dev/") + disk + QLatin1Char('1'))});
    return root;
}

void FakeMachine::pullDrive(const QString& rootPath)
{
    mustHold(QDir(rootPath).removeRecursively(), "pull a drive");
    m_volumes.erase(std::remove_if(m_volumes.begin(), m_volumes.end(),
                                   [&rootPath](const platform::Volume& volume) {
                                       return volume.rootPath == rootPath;
                                   }),
                    m_volumes.end());
}

} // namespace corv::test
