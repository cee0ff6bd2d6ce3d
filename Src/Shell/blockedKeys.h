#pragma once

class QGuiApplication;
class QWindow;

namespace corv {

/// Whether a modal window keeps `window` from being used. A window that belongs to the modal one,
/// and a popup, are not blocked. Interface thread.
bool isBlockedByModalWindow(const QWindow* window);

/// Drops the keys and the shortcuts of a blocked window: the window system gives the keyboard also
/// to a window that a dialog blocks, at least until the dialog is on the screen, and its shortcuts
/// would work behind the dialog. A blocked window that gets the keyboard later passes it on to the
/// dialog. Once, for as long as the application lives.
void dropKeysOfBlockedWindows(QGuiApplication& application);

} // namespace corv
