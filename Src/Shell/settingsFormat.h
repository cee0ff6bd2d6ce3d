#pragma once

#include <QSettings>

class QIODevice;

namespace corv {

/// Makes the format below that of every `QSettings` without a name, and so of all settings that the
/// program remembers; their file stays the same. Interface thread, once, after the names of the
/// application are set and before the first settings are made.
void keepSettingsWhole();

/// The text of the settings file, as Qt's own format for it has it: each reads what the other
/// writes. Qt's does not notice that the disk took only a part, or nothing, of a short file, and
/// puts that in the place of the earlier settings; with this one the earlier file stays, and the
/// next change tries again.
///
/// Lines that are no settings are passed over. False if the device fails. Any thread.
bool readSettings(QIODevice& device, QSettings::SettingsMap& settings);

/// False, with a warning in the log, unless the device took all of it.
bool writeSettings(QIODevice& device, const QSettings::SettingsMap& settings);

} // namespace corv
