#pragma once

class QGuiApplication;

namespace corv {

/// Lets every dialog that asks where to save complete a name without a suffix by that of the chosen
/// filter, itself and before it looks whether there is such a file: completing the name
/// afterwards writes over a file that nobody was asked about. Interface thread, once; for as long
/// as the application lives.
void completeNamesInSaveDialogs(QGuiApplication& application);

} // namespace corv
