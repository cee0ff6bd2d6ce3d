#include "Review/ownedFiles.h"

#include "Platform/fileSystem.h"

#include <QDir>
#include <QUuid>

namespace corv {
namespace {

constexpr int mostFiles = 200;
const QString lockSuffix = QStringLiteral(".lock");

} // namespace

OwnedFile newOwnedFile(const QString& folder, const QString& prefix)
{
    if (folder.isEmpty() || !QDir().mkpath(folder))
        return {};
    const QString file =
        QStringLiteral("%1/%2-%3.json")
            .arg(folder, prefix, QUuid::createUuid().toString(QUuid::WithoutBraces));
    const std::shared_ptr<QLockFile> lock = takeOwnership(file);
    return lock ? OwnedFile{file, lock} : OwnedFile{};
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
