#pragma once

#include "Platform/Platform.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QTemporaryDir>

namespace corv::test {

/// Drives that are folders, and a tree of device attributes that says of each whether it can be
/// pulled: what a test needs of a machine whose cards it cannot really have.
class FakeMachine
{
public:
    FakeMachine();

    /// Mounts a partition of a new disk in a folder of that name. Gives the root of the volume.
    QString addDrive(const QString& folderName, const QString& label, bool removable);

    /// Makes an empty file, or one with this content, and the folders on the way. Gives its path.
    QString addFile(const QString& path, const QByteArray& content = QByteArray());

    /// Takes the card out: its files are gone, its volume is no longer listed.
    void pullDrive(const QString& rootPath);

    const QList<platform::Volume>& volumes() const { return m_volumes; }
    QString sysfsRoot() const { return m_folder.path() + QStringLiteral("/sys"); }

    /// The folder under which all of it lies; for other files of the test.
    QString path(const QString& below) const { return m_folder.filePath(below); }

    /// Adds a device to the tree: `place` is its folder below "devices", the last part its name.
    void addDevice(const QString& place, const QHash<QString, QByteArray>& attributes);

    /// Says that one mapped device is on another device, both by their places.
    void addSlave(const QString& place, const QString& slavePlace);

private:
    QTemporaryDir m_folder;
    QList<platform::Volume> m_volumes;
    int m_disks = 0;
};

} // namespace corv::test
