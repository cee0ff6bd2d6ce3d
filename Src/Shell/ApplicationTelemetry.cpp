#include "Shell/ApplicationTelemetry.h"

#include "Shell/logCategory.h"

#include <QDebug>

namespace corv {

void ApplicationTelemetry::vistrelEvent(QString name)
{
    qCInfo(lcShell) << name;
}

void ApplicationTelemetry::vistrelEvent(QString name, QString context)
{
    qCInfo(lcShell) << name << ":" << context;
}

} // namespace corv
