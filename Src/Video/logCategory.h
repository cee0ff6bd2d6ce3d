#pragma once

#include <QLoggingCategory>

// What this room writes to the log is of the category "vistrel.video", so that a reader of the log
// sees where a line comes from, and a rule ("vistrel.video.info=false" in QT_LOGGING_RULES) can
// silence it.
Q_DECLARE_LOGGING_CATEGORY(lcVideo)
