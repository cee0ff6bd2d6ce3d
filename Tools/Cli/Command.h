#pragma once

#include <QByteArray>
#include <QStringList>
#include <functional>
#include <vector>

namespace corv::cli {

/// What a command ends with, and so the program.
enum ExitStatus { Done = 0, Failed = 1, WrongUsage = 2 };

/// One command of `vistrel-cli`. `run` is given what stands behind the command's name. It reports a
/// failure by `fail`; for `WrongUsage` it says nothing, since the program shows `arguments` then.
struct Command
{
    QString name;
    QString arguments; ///< as the help shows them: "FILE [--json]"
    QString summary;
    std::function<ExitStatus(const QStringList& arguments)> run;
};

// The commands, one set per file.
std::vector<Command> logCommands();
std::vector<Command> matchCommands();
std::vector<Command> frameCommands();
std::vector<Command> reportCommands();

/// Writes to standard output; `Failed` with a message when nobody takes it.
ExitStatus writeOut(const QByteArray& bytes);

/// Tells what went wrong in one line on standard error, and gives `Failed`.
ExitStatus fail(const QString& message);

/// Takes `option` out of `arguments`; whether it was there.
bool takeOption(QStringList* arguments, const QString& option);

/// Takes `option` and the word behind it out of `arguments`. Null if it is not there, empty if
/// nothing is behind it.
QString takeValue(QStringList* arguments, const QString& option);

} // namespace corv::cli
