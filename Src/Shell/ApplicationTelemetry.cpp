#include "Shell/ApplicationTelemetry.h"

#include <QDebug>

namespace corv {

void ApplicationTelemetry::vistrelEvent(QString name)
{
    qInfo() << name;
}

void ApplicationTelemetry::vistrelEvent(QString name, QString context)
{
    qInfo() << name << ":" << context;
}

} // namespace corv
