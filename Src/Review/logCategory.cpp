#include "Review/logCategory.h"

Q_LOGGING_CATEGORY(lcReview, "vistrel.review")
