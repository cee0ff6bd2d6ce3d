#pragma once

#include <QString>

namespace corv {

/// Whether a character steers a terminal or turns the direction of writing.
bool isSteering(QChar character);

/// A text from a file, safe to show on a terminal: characters that steer a terminal or turn the
/// direction of writing are replaced by U+FFFD, also line breaks.
QString printable(QString text);

} // namespace corv
