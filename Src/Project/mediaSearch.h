#pragma once

#include "Project/ProjectFile.h"

#include <QString>
#include <atomic>

namespace corv {

/// The contents of a project with those of its missing files that are in a folder, or anywhere
/// below it, replaced by what is there. A file is found by its name, in any case of letters, and
/// its size where the project knows it. Of several that could be meant, it is the one whose path
/// ends most like the stored one; where nothing decides, none. Files that exist stay.
///
/// Looks at every name below the folder, without following links, until `isCancelled`. Any thread.
ProjectContents withMediaIn(const ProjectContents& project, const QString& folder,
                            const std::atomic<bool>& isCancelled);

} // namespace corv
