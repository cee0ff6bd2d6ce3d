#pragma once

class QApplication;

namespace corv {

/// Draws everything at the scale of the screen, in steps as fine as the screen asks for. Before the
/// application object is made.
void followScreenScale();

/// Leaves out of the first frame what it does not need: a program for the graphics unit that grows
/// the texture of glyphs (they are kept in memory, too), and most of the texture that small
/// pictures share. Before the application object is made.
void hastenFirstFrame();

/// Lets fields write and read numbers as rulers, lists and exports do on every machine: with the
/// digits 0 to 9, a point, and no mark between thousands. Dates of file dialogs stay those of the
/// system. Before the windows are made.
void usePlainNumbers();

/// Writes texts in the size that the windows are made for, in the desktop's font: most of what they
/// contain has a size of its own, where a larger text has no room. The scale of the screen enlarges
/// both. Before the windows are made.
void useTextSizeOfWindows();

/// Gives what Qt draws by itself (message boxes, file dialogs, lists, scroll bars) the colours of
/// the windows. A message box shows its text as it is, never as markup, and the newest one lies on
/// top of the others. Interface thread, once; for as long as the application lives.
void dressDialogs(QApplication& application);

/// Changes those colours to the light or the dark ones; what is open follows. Interface thread.
void useDialogColours(bool light);

} // namespace corv
