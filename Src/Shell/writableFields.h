#pragma once

namespace corv {

/// Lets a screen reader, or another tool of the desktop that works by its tree, write into the text
/// fields of QML as into those of widgets: Qt Quick only lets it read them. A field that is
/// read-only or disabled, and one whose validator refuses the text, stays as it is. Once, before
/// the first field is shown. Interface thread.
void letReadersWriteIntoFields();

} // namespace corv
