#pragma once

#include "Base/Failure.h"

#include <QByteArray>
#include <QCommandLineOption>
#include <QCommandLineParser>
#include <QJsonDocument>
#include <QList>
#include <QString>
#include <functional>
#include <vector>

namespace corv::cli {

/// What a command ends with, and so the program.
enum ExitStatus {
    Done = 0,
    Failed = 1,
    WrongUsage = 2,
    PartlyDone = 3 ///< some of the work is done and some is not
};

/// One command of `vistrel-cli`: what it accepts and what it does.
struct Command
{
    QString name;
    QString arguments; ///< as the help shows them: "FILE [--json]"
    QString summary;   ///< half a line
    QList<QCommandLineOption> options;

    /// Called with the parsed line: every option on it is one of `options`, no value is empty.
    /// Reports a failure by `fail`. For `WrongUsage` the program shows `arguments` after it.
    std::function<ExitStatus(const QCommandLineParser& line)> run;
};

/// An option that is set or not.
QCommandLineOption flag(const QString& name, const QString& description);

/// An option with a value, which the help calls `valueName`.
QCommandLineOption valued(const QString& name, const QString& valueName,
                          const QString& description);

/// The whole number given for option `name`; `standard` if the option is not set. False, and the
/// value is reported, if it is no such number or less than `least`.
bool readNumber(const QCommandLineParser& line, const QString& name, int standard, int least,
                int* number);

/// The rate in hertz given for option `name`; 0 if the option is not set. False, and the value is
/// reported, if it is no number above 0.
bool readRate(const QCommandLineParser& line, const QString& name, double* hz);

/// Reports by `fail` what is wrong with a line, and returns `WrongUsage`.
ExitStatus wrongUsage(const QString& reason);

/// The commands of one source file. To add a command, write a file named `...Command.cpp` in this
/// folder that defines a constant of this type: nothing else names the file or the command.
class CommandSet
{
public:
    /// `make` returns the commands, in the order of the help. `place` is that of the set: the help
    /// shows the sets in ascending order of it, so take a number between those of its neighbours
    /// there. No two sets have the same.
    CommandSet(int place, std::vector<Command> (*make)()) noexcept;
    CommandSet(const CommandSet&) = delete;
    CommandSet& operator=(const CommandSet&) = delete;

    /// The commands of all files that are linked into this program, in the order of the help.
    static std::vector<Command> all();

private:
    int m_place;
    std::vector<Command> (*m_make)();
    const CommandSet* m_next; ///< the set that was made before this one
};

/// The words of the line that the program was started with, its name first.
QStringList wordsOf(int argc, char** argv);

/// Runs the command of `commands` that the line names, or prints the help or the version.
/// `arguments` begin with the name of the program.
ExitStatus runLine(const std::vector<Command>& commands, const QStringList& arguments);

/// JSON to be printed: characters that steer a terminal or turn the direction of writing, and that
/// JSON allows, are escaped.
QByteArray printedJson(const QJsonDocument& document,
                       QJsonDocument::JsonFormat format = QJsonDocument::Indented);

/// Writes to standard output; `Failed` with a message if it cannot be written.
ExitStatus writeOut(const QByteArray& bytes);

/// Prints what went wrong as one line on standard error, and returns `Failed`. Characters that
/// steer a terminal are replaced.
ExitStatus fail(const QString& message);

/// The same with the failure's sentence; `PartlyDone` for work of which a part is missing.
ExitStatus fail(const Failure& failure);

} // namespace corv::cli
