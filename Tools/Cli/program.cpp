#include "Cli/Command.h"
#include "Cli/completion.h"
#include "Cli/diagnostics.h"
#include "Log/printable.h"

#include <QFile>
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <limits>
#include <new>

namespace corv::cli {
namespace {

// Of the sets of this program; each leads to the one made before it.
const CommandSet* newestSet = nullptr;

// Memory that cannot be had, on whichever thread. What was being written stays unfinished beside
// its name.
[[noreturn]] void giveUp()
{
    try {
        if (const std::exception_ptr current = std::current_exception())
            std::rethrow_exception(current);
    } catch (const std::bad_alloc&) {
        std::fputs("vistrel-cli: There is not enough memory.\n", stderr);
        std::_Exit(Failed);
    } catch (...) {
        std::fputs("vistrel-cli: An error that nothing handles.\n", stderr);
    }
    std::abort();
}

QList<QCommandLineOption> commonOptions()
{
    return {flag(QStringLiteral("help"), QStringLiteral("shows this")),
            flag(QStringLiteral("verbose"), QStringLiteral("shows diagnostics on standard error"))};
}

QList<QCommandLineOption> leadingOptions()
{
    return {flag(QStringLiteral("version"), QStringLiteral("shows the version")),
            valued(QStringLiteral("completion"), completionShells().join(QLatin1Char('|')),
                   QStringLiteral("prints what a shell needs to complete the lines"))};
}

QByteArray help(const std::vector<Command>& commands)
{
    QString text = QStringLiteral("usage: vistrel-cli [--verbose] COMMAND ...\n\n");
    for (const Command& command : commands) {
        const QString usage = command.name + QLatin1Char(' ') + command.arguments;
        text += QStringLiteral("  %1  %2\n").arg(usage, -34).arg(command.summary);
    }
    text +=
        QStringLiteral("\n  --help     shows this; COMMAND --help shows the options of a command\n"
                       "  --version  shows the version\n"
                       "  --completion bash|zsh|fish\n"
                       "             prints what a shell needs to complete the lines\n"
                       "  --verbose  shows diagnostics on standard error\n\n"
                       "Exit status: 0 done, 1 failed, 2 wrong usage, 3 done in part.\n");
    return text.toUtf8();
}

QByteArray helpOf(const Command& command)
{
    QString text = QStringLiteral("usage: vistrel-cli %1 %2\n\n%3\n\n")
                       .arg(command.name, command.arguments, command.summary);
    for (const QCommandLineOption& option : command.options + commonOptions()) {
        QString usage = QStringLiteral("--") + option.names().constFirst();
        if (!option.valueName().isEmpty())
            usage += QLatin1Char(' ') + option.valueName();
        text += QStringLiteral("  %1  %2\n").arg(usage, -18).arg(option.description());
    }
    return text.toUtf8();
}

ExitStatus showUsage(const QString& usage, const QString& reason = {})
{
    if (!reason.isEmpty())
        fail(reason);
    std::fprintf(stderr, "usage: vistrel-cli %s\n", printable(usage).toLocal8Bit().constData());
    return WrongUsage;
}

/// What is wrong with a line as such; empty if nothing is.
QString problemOf(const Command& command, const QCommandLineParser& line)
{
    if (!line.errorText().isEmpty())
        return line.errorText();
    for (const QCommandLineOption& option : command.options) {
        const QString name = option.names().constFirst();
        if (!option.valueName().isEmpty() && line.values(name).contains(QString()))
            return QStringLiteral("--%1: the value is empty.").arg(name);
    }
    return {};
}

ExitStatus runCommand(const Command& command, const QStringList& arguments, bool verbose)
{
    QCommandLineParser line;
    line.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    line.addOptions(command.options + commonOptions());
    line.parse(arguments);
    if (line.isSet(QStringLiteral("help")))
        return writeOut(helpOf(command));
    installDiagnostics(verbose || line.isSet(QStringLiteral("verbose")));
    const QString problem = problemOf(command, line);
    const ExitStatus status = problem.isEmpty() ? command.run(line) : WrongUsage;
    if (status != WrongUsage)
        return status;
    return showUsage(command.name + QLatin1Char(' ') + command.arguments, problem);
}

} // namespace

CommandSet::CommandSet(int place, std::vector<Command> (*make)()) noexcept
    : m_place(place), m_make(make), m_next(newestSet)
{
    newestSet = this;
}

std::vector<Command> CommandSet::all()
{
    std::vector<const CommandSet*> sets;
    for (const CommandSet* set = newestSet; set; set = set->m_next)
        sets.push_back(set);
    std::sort(sets.begin(), sets.end(), [](const CommandSet* left, const CommandSet* right) {
        return left->m_place < right->m_place;
    });
    std::vector<Command> commands;
    for (const CommandSet* set : sets) {
        const std::vector<Command> made = set->m_make();
        commands.insert(commands.end(), made.begin(), made.end());
    }
    return commands;
}

QStringList wordsOf(int argc, char** argv)
{
    QStringList words;
    for (int i = 0; i < argc; ++i)
        words += QFile::decodeName(argv[i]);
    return words;
}

ExitStatus runLine(const std::vector<Command>& commands, const QStringList& arguments)
{
    std::set_terminate(giveUp);
    QCommandLineParser line; // up to the command's name; what follows is the command's own
    line.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    line.setOptionsAfterPositionalArgumentsMode(QCommandLineParser::ParseAsPositionalArguments);
    line.addOptions(commonOptions());
    line.addOptions(leadingOptions());
    const bool understood = line.parse(arguments);
    const QString wanted = QStringLiteral("COMMAND ..., see --help");
    if (!understood)
        return showUsage(wanted, line.errorText());
    if (line.isSet(QStringLiteral("help")))
        return writeOut(help(commands));
    if (line.isSet(QStringLiteral("version")))
        return writeOut("vistrel-cli " VISTREL_CLI_VERSION "\n");
    if (line.isSet(QStringLiteral("completion"))) {
        const QString shell = line.value(QStringLiteral("completion"));
        const QByteArray script = completion(shell, commands, commonOptions(), leadingOptions());
        return script.isEmpty()
                   ? showUsage(
                         wanted,
                         QStringLiteral("--completion: there is none for \"%1\", only for %2.")
                             .arg(shell, completionShells().join(QStringLiteral(", "))))
                   : writeOut(script);
    }
    const QStringList rest = line.positionalArguments();
    if (rest.isEmpty())
        return showUsage(wanted);
    const auto command =
        std::find_if(commands.begin(), commands.end(), [&rest](const Command& candidate) {
            return candidate.name == rest.constFirst();
        });
    if (command == commands.end())
        return showUsage(wanted,
                         QStringLiteral("There is no command \"%1\".").arg(rest.constFirst()));
    return runCommand(*command, rest, line.isSet(QStringLiteral("verbose")));
}

QByteArray printedJson(const QJsonDocument& document, QJsonDocument::JsonFormat format)
{
    QByteArray json;
    const QString text = QString::fromUtf8(document.toJson(format));
    int from = 0;
    for (int i = 0; i < text.size(); ++i) {
        const ushort code = text[i].unicode();
        if (code < 0x7f || !isSteering(text[i])) // Qt escapes those of ASCII
            continue;
        json += text.midRef(from, i - from).toUtf8() + "\\u" +
                QByteArray::number(code, 16).rightJustified(4, '0');
        from = i + 1;
    }
    return json + text.midRef(from).toUtf8();
}

ExitStatus writeOut(const QByteArray& bytes)
{
    const auto size = static_cast<size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        return fail(QStringLiteral("cannot write to standard output"));
    return Done;
}

ExitStatus fail(const QString& message)
{
    std::fprintf(stderr, "vistrel-cli: %s\n", printable(message).toLocal8Bit().constData());
    return Failed;
}

ExitStatus fail(const Failure& failure)
{
    fail(failure.sentence.simplified());
    return failure.kind == Failure::Kind::incomplete ? PartlyDone : Failed;
}

QCommandLineOption flag(const QString& name, const QString& description)
{
    return {name, description};
}

QCommandLineOption valued(const QString& name, const QString& valueName, const QString& description)
{
    return {name, description, valueName};
}

bool readNumber(const QCommandLineParser& line, const QString& name, int standard, int least,
                int* number)
{
    bool isNumber = true;
    *number = line.isSet(name) ? line.value(name).toInt(&isNumber) : standard;
    if (isNumber && *number >= least)
        return true;
    wrongUsage(QStringLiteral("--%1: \"%2\" is not a whole number from %3 to %4.")
                   .arg(name, line.value(name), QString::number(least),
                        QString::number(std::numeric_limits<int>::max())));
    return false;
}

bool readRate(const QCommandLineParser& line, const QString& name, double* hz)
{
    bool isNumber = true;
    *hz = line.isSet(name) ? line.value(name).toDouble(&isNumber) : 0;
    if (!line.isSet(name) || (isNumber && std::isfinite(*hz) && *hz > 0))
        return true;
    wrongUsage(QStringLiteral("--%1: \"%2\" is not a number above 0.").arg(name, line.value(name)));
    return false;
}

ExitStatus wrongUsage(const QString& reason)
{
    fail(reason);
    return WrongUsage;
}

} // namespace corv::cli
