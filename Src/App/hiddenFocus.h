#pragma once

class QGuiApplication;

namespace corv {

/// Takes the keys from an item that is hidden while it has them, and gives them to what it was in.
/// Qt Quick leaves them there: Space would press a button that nobody sees, and Tab would look for
/// the next item without an end. Interface thread, once; for as long as the application lives.
void keepKeysOffHiddenItems(QGuiApplication& application);

} // namespace corv
