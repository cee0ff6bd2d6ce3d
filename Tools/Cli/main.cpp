#include "Cli/Command.h"
#include "Cli/diagnostics.h"
#include "Shell/AppInfo.h"

#include <QCoreApplication>
#include <algorithm>
#include <cstdio>

namespace corv::cli {
namespace {

std::vector<Command> allCommands()
{
    std::vector<Command> commands;
    for (const auto& set : {logCommands(), matchCommands(), frameCommands(), reportCommands()})
        commands.insert(commands.end(), set.begin(), set.end());
    return commands;
}

QByteArray help(const std::vector<Command>& commands)
{
    QString text = QStringLiteral("usage: vistrel-cli [--verbose] COMMAND ...\n\n");
    for (const Command& command : commands) {
        const QString usage = command.name + QLatin1Char(' ') + command.arguments;
        text += QStringLiteral("  %1  %2\n").arg(usage, -34).arg(command.summary);
    }
    text += QStringLiteral("\n  --help     shows this\n"
                           "  --version  shows the version\n"
                           "  --verbose  shows diagnostics on standard error\n\n"
                           "Exit status: 0 done, 1 failed, 2 wrong usage.\n");
    return text.toUtf8();
}

ExitStatus showUsage(const QString& usage)
{
    std::fprintf(stderr, "usage: vistrel-cli %s\n", qPrintable(usage));
    return WrongUsage;
}

ExitStatus runCommand(QStringList arguments)
{
    installDiagnostics(takeOption(&arguments, QStringLiteral("--verbose")));
    const std::vector<Command> commands = allCommands();
    if (arguments.isEmpty())
        return showUsage(QStringLiteral("COMMAND ..., see --help"));
    const QString name = arguments.takeFirst();
    if (name == QLatin1String("--help"))
        return writeOut(help(commands));
    if (name == QLatin1String("--version"))
        return writeOut("vistrel-cli " + AppInfo().versionString().toUtf8() + '\n');
    const auto command =
        std::find_if(commands.begin(), commands.end(),
                     [&name](const Command& candidate) { return candidate.name == name; });
    if (command == commands.end())
        return showUsage(QStringLiteral("COMMAND ..., see --help; no command \"%1\"").arg(name));
    const ExitStatus status = command->run(arguments);
    return status == WrongUsage ? showUsage(command->name + QLatin1Char(' ') + command->arguments)
                                : status;
}

} // namespace

ExitStatus writeOut(const QByteArray& bytes)
{
    const auto size = static_cast<size_t>(bytes.size());
    if (std::fwrite(bytes.constData(), 1, size, stdout) != size || std::fflush(stdout) != 0)
        return fail(QStringLiteral("cannot write to standard output"));
    return Done;
}

ExitStatus fail(const QString& message)
{
    std::fprintf(stderr, "vistrel-cli: %s\n", message.toLocal8Bit().constData());
    return Failed;
}

bool takeOption(QStringList* arguments, const QString& option)
{
    return arguments->removeAll(option) > 0;
}

QString takeValue(QStringList* arguments, const QString& option)
{
    const int at = arguments->indexOf(option);
    if (at < 0)
        return {};
    arguments->removeAt(at);
    return at < arguments->size() ? arguments->takeAt(at) : QString(QLatin1String(""));
}

} // namespace corv::cli

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    return corv::cli::runCommand(QCoreApplication::arguments().mid(1));
}
