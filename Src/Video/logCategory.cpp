#include "Video/logCategory.h"

Q_LOGGING_CATEGORY(lcVideo, "vistrel.video")
