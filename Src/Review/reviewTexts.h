#pragma once

#include "Base/Failure.h"

#include <QString>
#include <optional>

namespace corv {

// What a review says of files that are not where they should be.

/// `kind` is "video" or "log".
QString missingFileText(const QString& kind, const QString& path);

/// The files of a project were not copied beside it.
QString notCopiedText(const QString& videoPath, const QString& logPath);

/// Why a video that is there and can be read could not be opened, by its first bytes.
Failure brokenVideo(const QString& path);

/// A text, followed by the cause where it is known.
QString withCause(const QString& text, const std::optional<Failure>& cause);

} // namespace corv
