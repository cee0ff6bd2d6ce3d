#pragma once

namespace corv::platform {

/// Has the system end the calling process when the one that started it ends, however that happens.
/// For a child between fork and exec: calls nothing but the system.
void endWithParent();

} // namespace corv::platform
