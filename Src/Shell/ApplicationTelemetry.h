#pragma once

#include <QObject>
#include <QString>

namespace corv {

/// The one place where the interface reports what the user does. Events go to the diagnostic log
/// and nowhere else. Interface singleton, interface thread.
class ApplicationTelemetry : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    Q_INVOKABLE void vistrelEvent(QString name);
    Q_INVOKABLE void vistrelEvent(QString name, QString context);
};

} // namespace corv
