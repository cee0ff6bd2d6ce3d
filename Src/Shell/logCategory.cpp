#include "Shell/logCategory.h"

Q_LOGGING_CATEGORY(lcShell, "vistrel.shell")
