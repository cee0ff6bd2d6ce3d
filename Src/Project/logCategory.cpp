#include "Project/logCategory.h"

Q_LOGGING_CATEGORY(lcProject, "vistrel.project")
