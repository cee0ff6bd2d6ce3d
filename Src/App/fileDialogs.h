#pragma once

class QGuiApplication;

namespace corv {

/// Suits each file dialog of Qt's to pilots, once it is shown.
///
/// The list of matching names goes from its field: one that is open when Return ends the dialog
/// keeps the keyboard, and no window gets another key until the pilot goes to another one and back.
/// The names are in the dialog anyway, and the matching one is selected there. The column of dates
/// is as wide as they are: files of drones are known by them.
///
/// Interface thread, once; for as long as the application lives.
void suitFileDialogs(QGuiApplication& application);

} // namespace corv
