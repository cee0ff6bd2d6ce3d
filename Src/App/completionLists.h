#pragma once

class QGuiApplication;

namespace corv {

/// Takes the list of matching names from the field of every file dialog. A list that is open when
/// Return ends the dialog keeps the keyboard: no window gets another key until the pilot goes to
/// another one and back. The names are in the dialog anyway, and the matching one is selected
/// there. Interface thread, once; for as long as the application lives.
void dropListsOfFileDialogs(QGuiApplication& application);

} // namespace corv
