#pragma once

#include <QString>

namespace corv {

/// A text from a file, safe to show on a terminal: characters that steer a terminal or turn the
/// direction of writing are replaced by U+FFFD, also line breaks.
QString printable(QString text);

} // namespace corv
