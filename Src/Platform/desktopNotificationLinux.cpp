#include "Platform/desktopNotification.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QFileInfo>
#include <QStringList>
#include <QVariantMap>

namespace corv::platform {
namespace {

constexpr int serversOwnTime = -1; // how long it is shown

// Looking for a bus that no session has made would start one, which takes seconds.
bool hasSessionBus()
{
    return qEnvironmentVariableIsSet("DBUS_SESSION_BUS_ADDRESS") ||
           QFileInfo::exists(qEnvironmentVariable("XDG_RUNTIME_DIR") + QStringLiteral("/bus"));
}

void notify(const QDBusConnection& bus, const QString& title, const QString& text)
{
    if (!bus.isConnected())
        return;
    QDBusMessage message = QDBusMessage::createMethodCall(
        QStringLiteral("org.freedesktop.Notifications"),
        QStringLiteral("/org/freedesktop/Notifications"),
        QStringLiteral("org.freedesktop.Notifications"), QStringLiteral("Notify"));
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("vistrel")}};
    // The text may hold names of files, and the service takes it for HTML.
    message << QStringLiteral("Vistrel") << 0U << QStringLiteral("vistrel") << title
            << text.toHtmlEscaped() << QStringList() << hints << serversOwnTime;
    bus.send(message);
}

} // namespace

void showDesktopNotification(const QString& title, const QString& text)
{
    if (hasSessionBus())
        notify(QDBusConnection::sessionBus(), title, text);
}

void showDesktopNotification(const QString& title, const QString& text, const QString& bus)
{
    notify(QDBusConnection(bus), title, text);
}

} // namespace corv::platform
