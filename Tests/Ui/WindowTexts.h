#pragma once

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>
#include <QWidget>

namespace corv::test {

/// What a look at one window would find wrong, a sentence each; empty if it is right. Of each text
/// that shows: it has the room that it needs, all of it is in the window and
/// none below the screen, nothing lies on it, no
/// other text is in its place, and it can be told from its ground (4.5, and 3 for an icon; what
/// cannot be used has no floor).
/// `picture` is the one that was grabbed of it.
QStringList faultsOf(QQuickWindow* window, const QImage& picture);

/// The same of a dialog that Qt draws: room and contrast of its labels and buttons.
QStringList faultsOf(QWidget* dialog);

} // namespace corv::test
