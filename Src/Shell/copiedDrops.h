#pragma once

class QGuiApplication;

namespace corv {

/// Answers what is dragged over a window and dropped on it with a copy wherever the source allows
/// one: a source that learns of a move may remove the files it gave. Once, for as long as the
/// application lives. Interface thread.
void takeDropsAsCopies(QGuiApplication& application);

} // namespace corv
