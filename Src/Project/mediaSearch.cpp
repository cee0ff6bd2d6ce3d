#include "Project/mediaSearch.h"

#include <QDirIterator>
#include <QFileInfo>
#include <QHash>
#include <algorithm>

namespace corv {
namespace {

QString nameKey(const QString& path)
{
    return path.mid(path.lastIndexOf(QLatin1Char('/')) + 1).toLower();
}

/// How many of the last parts of two paths are the same, the name among them.
int commonEnd(const QString& a, const QString& b)
{
    const QStringList left = a.toLower().split(QLatin1Char('/'));
    const QStringList right = b.toLower().split(QLatin1Char('/'));
    const auto differ = std::mismatch(left.rbegin(), left.rend(), right.rbegin(), right.rend());
    return static_cast<int>(differ.first - left.rbegin());
}

QString bestOf(QStringList candidates, const QString& stored, qint64 sizeBytes)
{
    if (sizeBytes >= 0)
        candidates.erase(std::remove_if(candidates.begin(), candidates.end(),
                                        [sizeBytes](const QString& file) {
                                            return QFileInfo(file).size() != sizeBytes;
                                        }),
                         candidates.end());
    std::sort(candidates.begin(), candidates.end());
    std::stable_sort(candidates.begin(), candidates.end(),
                     [&stored](const QString& a, const QString& b) {
                         return commonEnd(a, stored) > commonEnd(b, stored);
                     });
    const bool isUndecided = sizeBytes < 0 && candidates.size() > 1 &&
                             commonEnd(candidates[0], stored) == commonEnd(candidates[1], stored);
    return isUndecided ? QString() : candidates.value(0);
}

} // namespace

ProjectContents withMediaIn(const ProjectContents& project, const QString& folder,
                            const std::atomic<bool>& isCancelled)
{
    const QStringList missing = project.missingFiles();
    QHash<QString, QStringList> candidates;
    for (const QString& file : missing)
        candidates.insert(nameKey(file), {});
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (!candidates.isEmpty() && !isCancelled && files.hasNext()) {
        const QString file = files.next();
        const auto wanted = candidates.find(nameKey(file));
        if (wanted != candidates.end())
            wanted->append(file);
    }

    ProjectContents found = project;
    for (const QString& file : missing) {
        const qint64 sizeBytes = project.sizes.value(file, -1);
        const QString there = bestOf(candidates.value(nameKey(file)), file, sizeBytes);
        if (there.isEmpty())
            continue;
        std::replace(found.parts.begin(), found.parts.end(), file, there);
        if (found.videoFile == file)
            found.videoFile = there;
        if (found.logFile == file)
            found.logFile = there;
    }
    return found;
}

} // namespace corv
