#include "Review/ownedFiles.h"

#include "Platform/fileSystem.h"

#include <QDir>
#include <QUuid>

namespace corv {
namespace {

constexpr int mostFiles = 200;
const QString lockSuffix = QStringLiteral(".lock");

/// The lock keeps no reason for its failure; a file without a name has the same one.
int whyNoFile(const QString& path)
{
    platform::NewFile file(path);
    const int error = file.open();
    return error != 0 ? error : file.write("0", 1);
}

} // namespace

OwnedFile newOwnedFile(const QString& folder, const QString& prefix)
{
    if (folder.isEmpty())
        return {};
    QDir().mkpath(folder); // a failure shows in what follows
    const QString file =
        QStringLiteral("%1/%2-%3.json")
            .arg(folder, prefix, QUuid::createUuid().toString(QUuid::WithoutBraces));
    const std::shared_ptr<QLockFile> lock = takeOwnership(file);
    return lock ? OwnedFile{file, lock, 0} : OwnedFile{{}, {}, whyNoFile(file)};
}

std::shared_ptr<QLockFile> takeOwnership(const QString& file)
{
    auto lock = std::make_shared<QLockFile>(file + lockSuffix);
    lock->setStaleLockTime(0); // held for as long as its process lives, however long that is
    return lock->tryLock(0) ? lock : nullptr;
}

QStringList abandonedFiles(const QString& folder, const QString& prefix)
{
    const QDir place(folder);
    if (folder.isEmpty() || !place.exists())
        return {};
    const QString pattern = prefix + QStringLiteral("-*.json");
    // Locks that killed programs left without a file.
    for (const QString& name : place.entryList({pattern + lockSuffix}, QDir::Files))
        takeOwnership(place.filePath(name).chopped(lockSuffix.size()));
    QStringList files;
    const QStringList names = place.entryList({pattern}, QDir::Files, QDir::Time);
    for (const QString& name : names.mid(0, mostFiles)) {
        const QString file = place.filePath(name);
        if (!takeOwnership(file))
            continue;
        platform::removeAbandonedParts(file);
        files << file;
    }
    return files;
}

} // namespace corv
