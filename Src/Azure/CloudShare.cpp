#include "Azure/CloudShare.h"

#include "deployment.h"

namespace corv {

CloudShare CloudShare::ofThisBuild()
{
    CloudShare share;
    if (VISTREL_UPDATER) {
        share.baseUrl = QStringLiteral(VISTREL_UPDATE_BASE_URL);
        share.canonicalisedResourcePrefix = QStringLiteral(VISTREL_UPDATE_RESOURCE_PREFIX);
        share.accountKey = QByteArrayLiteral(VISTREL_UPDATE_ACCOUNT_KEY);
    }
    return share;
}

bool CloudShare::isConfigured() const
{
    return !baseUrl.isEmpty() && !canonicalisedResourcePrefix.isEmpty() && !accountKey.isEmpty();
}

QString CloudShare::accountName() const
{
    return canonicalisedResourcePrefix.section(QLatin1Char('/'), 1, 1);
}

} // namespace corv
