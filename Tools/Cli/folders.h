#pragma once

#include "Base/Failure.h"
#include "Base/Result.h"

#include <QString>
#include <optional>

namespace corv::cli {

/// Why a folder cannot be listed: there is none, it is something else, or the system refuses
/// access. Nothing if it can.
std::optional<Failure> folderProblem(const QString& path);

/// Makes a folder and those above it; done where it is there.
Status makeFolder(const QString& path);

} // namespace corv::cli
