#pragma once

#include <QImage>
#include <QQuickItem>
#include <QQuickWindow>
#include <QStringList>
#include <QWidget>

namespace corv::test {

/// The faults of the texts that a window shows, a sentence each; empty if there are none. A text is
/// right if it has the room that it needs, is inside the window and above the lower edge of the
/// screen, is neither covered nor drawn over another text, and has enough contrast with its ground:
/// 4.5, an icon 3, a disabled control any. `picture` is a grab of the window.
QStringList faultsOf(QQuickWindow* window, const QImage& picture);

/// The same of a dialog that Qt draws: room and contrast of its labels and buttons.
QStringList faultsOf(QWidget* dialog);

} // namespace corv::test
