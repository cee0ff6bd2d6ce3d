#include "Base/sameFile.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace corv {

bool isOneOfFiles(const QString& target, const QStringList& files)
{
    const std::filesystem::path path = target.toStdString();
    return std::any_of(files.begin(), files.end(), [&path](const QString& file) {
        std::error_code notThere;
        return std::filesystem::equivalent(path, file.toStdString(), notThere);
    });
}

} // namespace corv
