#include "App/logCategory.h"

Q_LOGGING_CATEGORY(lcApp, "vistrel.app")
