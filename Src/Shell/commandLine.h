#pragma once

#include <QString>
#include <QStringList>

namespace corv {

/// What the command line of `vistrel` asks for.
struct CommandLine
{
    enum class Wish {
        openWindow, ///< with `file`, if it is not empty
        showText,   ///< `text` on standard output, then exit status 0
        refuse      ///< `text` on standard error, then exit status 2
    };

    Wish wish = Wish::openWindow;
    QString file; ///< a path; made from the address where a file URL was given
    QString text; ///< ends with a line feed
};

/// Reads `arguments`, of which the first is the name of the program. Needs no application object,
/// so that --version and --help work without a display. Any thread.
CommandLine readCommandLine(const QStringList& arguments);

} // namespace corv
