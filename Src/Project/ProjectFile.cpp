#include "Project/ProjectFile.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <filesystem>
#include <system_error>

namespace corv {
namespace {

bool isExistingFile(const QString& path)
{
    return QFileInfo::exists(path) && QFileInfo(path).isFile();
}

} // namespace

bool ProjectContents::videoFileExists() const
{
    return isExistingFile(videoFile);
}

bool ProjectContents::logFileExists() const
{
    return isExistingFile(logFile);
}

QStringList ProjectContents::namedFiles() const
{
    QStringList named = parts.isEmpty() ? QStringList(videoFile) : parts;
    if (!namesVideo)
        named.clear();
    if (namesLog)
        named << logFile;
    return named;
}

QStringList ProjectContents::missingFiles() const
{
    QStringList missing;
    for (const QString& file : namedFiles()) {
        if (!isExistingFile(file))
            missing << file;
    }
    return missing;
}

QStringList ProjectContents::openableParts() const
{
    const auto firstMissing = std::find_if_not(parts.begin(), parts.end(), isExistingFile);
    return parts.mid(0, static_cast<int>(firstMissing - parts.begin()));
}

bool isNoLog(const QString& logPath)
{
    return logPath.isEmpty() || logPath == QLatin1String(".") ||
           logPath == QLatin1String("no_match");
}

QString withoutFilePrefix(const QString& path)
{
    return path.startsWith(QLatin1String("file:/")) ? path.mid(5) : path;
}

std::optional<Failure> fileProblem(const QString& what, const QString& path)
{
    const QFileInfo file(path);
    std::error_code error;
    const bool isThere = std::filesystem::exists(QFile::encodeName(path).toStdString(), error);
    if (!isThere && error == std::errc::permission_denied)
        return Failure{Failure::Kind::noPermission,
                       QStringLiteral("%1 %2 may not be read: no permission to enter its folder.")
                           .arg(what, path)};
    if (error == std::errc::too_many_symbolic_link_levels)
        return Failure{
            Failure::Kind::notFound,
            QStringLiteral("%1 %2 is a link that leads back to itself.").arg(what, path)};
    if (file.isSymLink() && !file.exists())
        return Failure{
            Failure::Kind::notFound,
            QStringLiteral("%1 %2 is a link to a file that does not exist.").arg(what, path)};
    if (!file.exists()) {
        if (!file.absoluteDir().exists())
            return Failure{Failure::Kind::notFound,
                           QStringLiteral("%1 cannot be reached: there is no folder %2. If it is "
                                          "on a card or a drive, connect that.")
                               .arg(what, file.absolutePath())};
        return Failure{Failure::Kind::notFound,
                       QStringLiteral("%1 %2 does not exist.").arg(what, path)};
    }
    if (!file.isFile())
        return Failure{Failure::Kind::notAFile,
                       QStringLiteral("%1 %2 is not a file.").arg(what, path)};
    if (!file.isReadable())
        return Failure{Failure::Kind::noPermission,
                       QStringLiteral("%1 %2 may not be read: permission denied.").arg(what, path)};
    return std::nullopt;
}

} // namespace corv
