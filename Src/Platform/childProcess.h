#pragma once

#include <QtGlobal>

namespace corv::platform {

/// Has the system end the calling process when the one that started it ends, however that happens;
/// ends it at once if that has happened already. `parent` is the number of the process that starts
/// it, asked for before. For a child between fork and exec: calls nothing but the system.
void endWithParent(qint64 parent);

} // namespace corv::platform
