#include "Azure/logCategory.h"

Q_LOGGING_CATEGORY(lcAzure, "vistrel.azure")
