#include "Log/logCategory.h"

Q_LOGGING_CATEGORY(lcLog, "vistrel.log")
