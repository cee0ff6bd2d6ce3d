#include "Update/logCategory.h"

Q_LOGGING_CATEGORY(lcUpdate, "vistrel.update")
