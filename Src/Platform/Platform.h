#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>
#include <QtGlobal>
#include <functional>

class QObject;

/// What differs by operating system: one header, and one file per system and subject behind it.
namespace corv::platform {

/// Installed memory in kilobytes, 0 where the system does not say. Any thread.
quint64 installedMemoryKb();

/// The bytes of memory that this process may have at most, used or not; 0 without such a limit. Any
/// thread.
quint64 addressSpaceLimitBytes();

/// The long form of a path given on the command line; the path itself where there are no others.
QString longPath(const QString& path);

/// One mounted volume.
struct Volume
{
    QString name;      ///< the label, empty if it has none
    QString rootPath;  ///< where it is mounted
    QByteArray device; ///< the block device, or whatever else the system names as its source
};

/// Kinds of drives. Only `driveRemovable` is ever tested; the others show a reader of the log why a
/// drive was skipped.
constexpr int driveUnknown = 0; ///< not on a block device
constexpr int driveRemovable = 2;
constexpr int driveFixed = 3;

/// All mounted volumes in the system's order, whatever their kind. None of them is asked that may
/// keep its answer back: a share whose server is gone, a device whose driver is a program that
/// hangs. Any thread.
QList<Volume> mountedVolumes();

/// The same of a table of mounts as the system writes it, and of a folder of links to devices that
/// are named after the labels.
QList<Volume> volumesOf(const QString& mountTable, const QString& labelFolder);

/// The kind of the drive that `device` is on. The disk decides, not the partition: the way to it
/// leads through symbolic links, partitions and mapped devices (encryption, volume groups), and a
/// volume that is on several disks is removable if any of them is. `sysfsRoot` is where the
/// system shows its devices. Any thread.
int driveType(const QByteArray& device, const QString& sysfsRoot = QStringLiteral("/sys"));

/// How many entries of a folder end in one of the extensions, case ignored, but have a name that is
/// no text in the system's encoding: no other function lists them. Any thread.
int undecodableNames(const QString& folder, const QStringList& extensions);

/// The program that starts its first argument with raised privileges, after asking the user.
QString elevationProgram();

/// Lets `program` start `file` with raised privileges. Does not block: `done(true)` is called once
/// the file runs, `done(false)` if the user refused or it could not be started. The started process
/// outlives this one. `done` runs on the calling thread, which needs an event loop, and is not
/// called once `context` is destroyed.
void launchElevated(const QString& program, const QString& file, QObject* context,
                    std::function<void(bool started)> done);

} // namespace corv::platform
