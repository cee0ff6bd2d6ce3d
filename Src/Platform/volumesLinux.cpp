#include "Platform/Platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <mntent.h>
#include <sys/statvfs.h>

namespace corv::platform {
namespace {

struct Mount
{
    QByteArray source; ///< a block device, a share, or a word of the file system's own
    QByteArray folder;
    QByteArray type;
};

// As the system lists them, which asks none of them.
QList<Mount> mountsIn(const QString& table)
{
    QList<Mount> mounts;
    const std::unique_ptr<FILE, int (*)(FILE*)> file(
        ::setmntent(QFile::encodeName(table).constData(), "re"), ::endmntent);
    if (!file)
        return mounts;
    // Of a longer line the options are cut, which come last.
    std::array<char, 65536> line{};
    mntent entry{};
    while (::getmntent_r(file.get(), &entry, line.data(), static_cast<int>(line.size())))
        mounts.append({entry.mnt_fsname, entry.mnt_dir, entry.mnt_type});
    return mounts;
}

bool isBelow(const QByteArray& folder, const char* parent)
{
    return folder == parent || folder.startsWith(QByteArray(parent) + '/');
}

// Of the system's own, and of no interest to a person.
bool isOfTheSystem(const Mount& mount)
{
    static constexpr std::array<const char*, 5> folders = {"/dev", "/proc", "/sys", "/var/run",
                                                           "/var/lock"};
    static constexpr std::array<const char*, 6> types = {
        "rootfs", "autofs", "rpc_pipefs", "fuse.gvfsd-fuse", "fuse.portal", "fuse.lxcfs"};
    return std::any_of(folders.begin(), folders.end(),
                       [&](const char* parent) { return isBelow(mount.folder, parent); }) ||
           std::any_of(types.begin(), types.end(),
                       [&](const char* type) { return mount.type == type; });
}

// By another machine or another program: a question to it waits for that one, if need be for ever.
bool isAnsweredElsewhere(const QByteArray& type)
{
    static constexpr std::array<const char*, 11> types = {
        "9p", "afs", "beegfs", "ceph", "cifs", "coda", "lustre", "nfs", "nfs4", "smb3", "virtiofs"};
    return type == "fuse" || type.startsWith("fuse.") ||
           std::any_of(types.begin(), types.end(),
                       [&](const char* other) { return type == other; });
}

bool hasRoom(const Mount& mount)
{
    struct statvfs facts = {};
    return ::statvfs(mount.folder.constData(), &facts) == 0 && facts.f_blocks > 0;
}

// A volume on a device has room; so has what is asked elsewhere, as far as one can know.
bool isVolume(const Mount& mount)
{
    return !isOfTheSystem(mount) && (mount.folder == "/" || mount.source.startsWith('/') ||
                                     isAnsweredElsewhere(mount.type) || hasRoom(mount));
}

// The names of links to devices have "\x20" for a blank.
QString decoded(const QString& name)
{
    QString text;
    for (int i = 0; i < name.size(); ++i) {
        bool isCode = false;
        const ushort code = name.mid(i, 2) == QLatin1String("\\x") && name.size() >= i + 4
                                ? name.mid(i + 2, 2).toUShort(&isCode, 16)
                                : ushort(0);
        text += isCode ? QChar(code) : name[i];
        i += isCode ? 3 : 0;
    }
    return text;
}

// By the device at the end of the link, as the system writes it.
QHash<QString, QString> labelsIn(const QString& folder)
{
    QHash<QString, QString> labels;
    const QFileInfoList links =
        QDir(folder).entryInfoList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    for (const QFileInfo& link : links)
        labels.insert(link.canonicalFilePath(), decoded(link.fileName()));
    labels.remove({}); // of links that lead nowhere
    return labels;
}

} // namespace

QList<Volume> volumesOf(const QString& mountTable, const QString& labelFolder)
{
    const QHash<QString, QString> labels = labelsIn(labelFolder);
    QList<Volume> volumes;
    for (const Mount& mount : mountsIn(mountTable)) {
        if (!isVolume(mount))
            continue;
        const QString device = mount.source.startsWith("/dev/")
                                   ? QFileInfo(QFile::decodeName(mount.source)).canonicalFilePath()
                                   : QString();
        volumes.append({labels.value(device), QFile::decodeName(mount.folder), mount.source});
    }
    return volumes;
}

QList<Volume> mountedVolumes()
{
    return volumesOf(QStringLiteral("/proc/self/mounts"), QStringLiteral("/dev/disk/by-label"));
}

} // namespace corv::platform
