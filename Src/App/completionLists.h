#pragma once

class QGuiApplication;

namespace corv {

/// Closes the list of names below the field of a file dialog before Return ends the dialog. A list
/// that is open longer than its dialog keeps the keyboard: no window gets another key until the
/// pilot goes to another one and back. Interface thread, once; for as long as the application
/// lives.
void closeListsBeforeFileDialogs(QGuiApplication& application);

} // namespace corv
