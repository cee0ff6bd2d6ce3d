#include "Discovery/logCategory.h"

Q_LOGGING_CATEGORY(lcDiscovery, "vistrel.discovery")
