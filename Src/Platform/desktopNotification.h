#pragma once

#include <QString>

namespace corv::platform {

/// Asks the desktop's service for notifications (org.freedesktop.Notifications) to show a title and
/// a sentence. Returns at once; without a session bus or without the service nothing happens.
/// Interface thread.
void showDesktopNotification(const QString& title, const QString& text);

/// The same on an open connection of that name in place of the session bus.
void showDesktopNotification(const QString& title, const QString& text, const QString& bus);

} // namespace corv::platform
