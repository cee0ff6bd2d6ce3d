#pragma once

class QApplication;

namespace corv {

/// All that an application needs before it shows the documents of the interface: their types, how
/// they write texts and numbers, what Qt draws by itself, and whom the keys, the drops and a screen
/// reader reach. Interface thread, once, before the first window; it holds for as long as the
/// application lives.
void prepareInterface(QApplication& application);

} // namespace corv
