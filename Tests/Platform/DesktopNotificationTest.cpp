#include "Platform/desktopNotification.h"

#include <QDBusConnection>
#include <QProcess>
#include <QtTest>

using corv::platform::showDesktopNotification;

/// Plays the desktop's service.
class Notifications : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

public:
    QStringList titles;
    QStringList texts;

public slots:
    uint Notify(const QString&, uint, const QString&, const QString& title, const QString& text,
                const QStringList&, const QVariantMap&, int)
    {
        titles << title;
        texts << text;
        return 1;
    }
};

/// On a bus of its own.
class DesktopNotificationTest : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void reachesTheService();
    void doesNothingWithoutTheService();
    void doesNothingWithoutABus();

private:
    QProcess m_bus;
    QString m_address;
};

void DesktopNotificationTest::initTestCase()
{
    m_bus.start("dbus-daemon", {"--session", "--nofork", "--print-address"});
    QVERIFY2(m_bus.waitForStarted(), "dbus-daemon is missing");
    QTRY_VERIFY(m_bus.canReadLine());
    m_address = QString::fromUtf8(m_bus.readLine().trimmed());
}

void DesktopNotificationTest::cleanupTestCase()
{
    QDBusConnection::disconnectFromBus("program");
    QDBusConnection::disconnectFromBus("desktop");
    m_bus.kill();
    m_bus.waitForFinished();
}

void DesktopNotificationTest::doesNothingWithoutTheService()
{
    QDBusConnection program = QDBusConnection::connectToBus(m_address, "program");
    QVERIFY(program.isConnected());
    showDesktopNotification("Write the video", "The video is written.", "program");
    QVERIFY(program.isConnected());
}

void DesktopNotificationTest::reachesTheService()
{
    QDBusConnection desktop = QDBusConnection::connectToBus(m_address, "desktop");
    Notifications service;
    QVERIFY(desktop.registerObject("/org/freedesktop/Notifications", &service,
                                   QDBusConnection::ExportAllSlots));
    QVERIFY(desktop.registerService("org.freedesktop.Notifications"));
    QDBusConnection::connectToBus(m_address, "program");
    showDesktopNotification("Write the video", "<b>.mp4 & more", "program");
    QTRY_COMPARE(service.titles, QStringList{"Write the video"});
    QCOMPARE(service.texts, QStringList{"&lt;b&gt;.mp4 &amp; more"});
    QVERIFY(desktop.unregisterService("org.freedesktop.Notifications"));
}

void DesktopNotificationTest::doesNothingWithoutABus()
{
    showDesktopNotification("Write the video", "The video is written.", "no such bus");
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    qputenv("XDG_RUNTIME_DIR", "/nowhere");
    showDesktopNotification("Write the video", "The video is written.");
}

QTEST_GUILESS_MAIN(DesktopNotificationTest)
#include "DesktopNotificationTest.moc"
