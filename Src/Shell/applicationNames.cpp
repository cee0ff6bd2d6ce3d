#include "Shell/applicationNames.h"

#include <QCoreApplication>

namespace corv {

void setApplicationNames()
{
    QCoreApplication::setOrganizationName(QStringLiteral("Corvenity"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("corvenity.example"));
    QCoreApplication::setApplicationName(QStringLiteral("Vistrel"));
}

} // namespace corv
