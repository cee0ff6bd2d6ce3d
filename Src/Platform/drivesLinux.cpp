#include "Platform/Platform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <dirent.h>
#include <memory>

namespace corv::platform {
namespace {

// Mapped devices can be on mapped devices, but not in circles: deeper than this is damage.
constexpr int deepestMapping = 16;

QByteArray attribute(const QString& folder, const QString& name)
{
    QFile file(folder + QLatin1Char('/') + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll().trimmed() : QByteArray();
}

// A partition's folder lies inside that of its disk.
QString diskOf(const QString& deviceFolder)
{
    const bool isPartition = QFileInfo::exists(deviceFolder + QStringLiteral("/partition"));
    return isPartition ? QFileInfo(deviceFolder).path() : deviceFolder;
}

// A reader soldered to the board is not removable, but the card in it is.
bool isCardInFixedReader(const QString& disk)
{
    return attribute(disk, QStringLiteral("device/type")) == "SD";
}

bool isRemovable(const QString& deviceFolder, int depth)
{
    const QString disk = diskOf(deviceFolder);
    if (attribute(disk, QStringLiteral("removable")) == "1" || isCardInFixedReader(disk))
        return true;
    if (depth == deepestMapping)
        return false;
    const QFileInfoList below =
        QDir(disk + QStringLiteral("/slaves")).entryInfoList(QDir::Dirs | QDir::NoDotAndDotDot);
    return std::any_of(below.begin(), below.end(), [depth](const QFileInfo& slave) {
        return isRemovable(slave.canonicalFilePath(), depth + 1);
    });
}

// The kernel's name of a device: that of the node at the end of the links, with the slash that some
// drivers have in their names written as sysfs does.
QString kernelName(const QByteArray& device)
{
    const QString path = QFile::decodeName(device);
    const QString node = QFileInfo(path).canonicalFilePath();
    QString name = node.isEmpty() ? path : node;
    if (name.startsWith(QLatin1String("/dev/")))
        name.remove(0, 5);
    else
        name = QFileInfo(name).fileName();
    return name.replace(QLatin1Char('/'), QLatin1Char('!'));
}

// As nearly all names are; decoding takes longer than reading them.
bool isAscii(const QByteArray& name)
{
    return std::all_of(name.begin(), name.end(),
                       [](char letter) { return static_cast<signed char>(letter) >= 0; });
}

} // namespace

int driveType(const QByteArray& device, const QString& sysfsRoot)
{
    if (!device.startsWith('/'))
        return driveUnknown;
    const QFileInfo entry(sysfsRoot + QStringLiteral("/class/block/") + kernelName(device));
    const QString folder = entry.canonicalFilePath();
    if (folder.isEmpty())
        return driveUnknown;
    return isRemovable(folder, 0) ? driveRemovable : driveFixed;
}

int undecodableNames(const QString& folder, const QStringList& extensions)
{
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(opendir(QFile::encodeName(folder)), closedir);
    int count = 0;
    while (const dirent* entry = entries ? readdir(entries.get()) : nullptr) {
        const QByteArray name(entry->d_name);
        if (isAscii(name) || QFile::encodeName(QFile::decodeName(name)) == name)
            continue;
        const QByteArray lower = name.toLower();
        count += std::any_of(extensions.begin(), extensions.end(), [&](const QString& extension) {
            return lower.endsWith('.' + extension.toLatin1());
        });
    }
    return count;
}

} // namespace corv::platform
