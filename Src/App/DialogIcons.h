#pragma once

#include <QIcon>

namespace corv {

/// The signs of message boxes.
enum class DialogSign { Information, Question, Warning, Failure };

/// The icon of a message box, drawn anew at each size, so that it is sharp on every screen, and
/// seen on dark and on light ground. Interface thread.
QIcon dialogIcon(DialogSign sign);

} // namespace corv
