#pragma once

#include "Base/Result.h"

namespace corv::cli {

/// Whether this program may have the memory that the libraries of pictures need to be loaded. The
/// system's loader ends a program with less by words of its own.
Status enoughMemoryToLoad();

/// The same for work on the pictures of a video. With less, the libraries that decode wait for
/// threads that were never started, or take what they could not read for damage.
Status enoughMemoryForVideos();

} // namespace corv::cli
