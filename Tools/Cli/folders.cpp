#include "Cli/folders.h"

#include "Platform/fileSystem.h"

#include <QFile>
#include <filesystem>
#include <system_error>

namespace corv::cli {
namespace {

std::filesystem::path nativePath(const QString& path)
{
    return QFile::encodeName(path).toStdString();
}

} // namespace

std::optional<Failure> folderProblem(const QString& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(nativePath(path), error);
    if (status.type() == std::filesystem::file_type::not_found)
        return Failure{Failure::Kind::notFound,
                       QStringLiteral("The folder %1 does not exist.").arg(path)};
    if (!error && !std::filesystem::is_directory(status))
        return Failure{Failure::Kind::notAFile, QStringLiteral("%1 is not a folder.").arg(path)};
    if (!error)
        const std::filesystem::directory_iterator entries(nativePath(path), error);
    if (error)
        return platform::failureOfError(error.value(),
                                        QStringLiteral("The folder %1 cannot be read").arg(path));
    return std::nullopt;
}

Status makeFolder(const QString& path)
{
    std::error_code error;
    std::filesystem::create_directories(nativePath(path), error);
    // On some systems this is no error if a file has the name of the folder.
    if (!error && !std::filesystem::is_directory(nativePath(path), error) && !error)
        error = std::make_error_code(std::errc::not_a_directory);
    if (error)
        return platform::failureOfError(error.value(),
                                        QStringLiteral("The folder %1 cannot be made").arg(path));
    return {};
}

} // namespace corv::cli
