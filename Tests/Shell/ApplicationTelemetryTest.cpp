#include "Shell/ApplicationTelemetry.h"
#include "Support/MessageLog.h"

#include <QtTest>

class ApplicationTelemetryTest : public QObject
{
    Q_OBJECT

private slots:
    void eventsGoToTheLog();
};

void ApplicationTelemetryTest::eventsGoToTheLog()
{
    const corv::test::MessageLog log;
    corv::ApplicationTelemetry telemetry;
    telemetry.vistrelEvent(QStringLiteral("save_project"));
    telemetry.vistrelEvent(QStringLiteral("vistrel_started"), QStringLiteral("1.5.0.166"));
    QCOMPARE(log.messages(QtInfoMsg),
             QStringList({QStringLiteral("\"save_project\""),
                          QStringLiteral("\"vistrel_started\" : \"1.5.0.166\"")}));
}

QTEST_GUILESS_MAIN(ApplicationTelemetryTest)
#include "ApplicationTelemetryTest.moc"
