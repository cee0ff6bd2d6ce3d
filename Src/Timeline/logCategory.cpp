#include "Timeline/logCategory.h"

Q_LOGGING_CATEGORY(lcTimeline, "vistrel.timeline")
