#include "Cli/Command.h"
#include "Cli/diagnostics.h"
#include "Cli/insets.h"

#include <QGuiApplication>
#include <QTextCodec>
#include <memory>

namespace corv::cli {
namespace {

std::vector<Command> allCommands()
{
    std::vector<Command> commands;
    for (const auto& set : {logCommands(), matchCommands(), projectCommands(), frameCommands(),
                            pointsCommands(), reportCommands(), reviewCommands()})
        commands.insert(commands.end(), set.begin(), set.end());
    return commands;
}

// Texts in pictures need fonts, which only an application for windows has; it gets a screen that is
// not there.
std::unique_ptr<QCoreApplication> makeApplication(const QStringList& arguments, char** argv)
{
    static int noArguments = 1; // the words of the line are the tool's own
    if (!arguments.contains(QStringLiteral("--") + instrumentsOption) &&
        !arguments.contains(QStringLiteral("--") + thermalBarOption))
        return std::make_unique<QCoreApplication>(noArguments, argv);
    constexpr const char* platform = "QT_QPA_PLATFORM";
    const bool wasSet = qEnvironmentVariableIsSet(platform);
    const QByteArray before = qgetenv(platform);
    installDiagnostics(arguments.contains(QLatin1String("--verbose"))); // of the start as well
    qputenv(platform, "offscreen");
    auto application = std::make_unique<QGuiApplication>(noArguments, argv);
    // Programs that are started from here get the environment as it was.
    wasSet ? qputenv(platform, before) : qunsetenv(platform);
    return application;
}

} // namespace
} // namespace corv::cli

int main(int argc, char** argv)
{
    using namespace corv::cli;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QStringList arguments = wordsOf(argc, argv);
    const auto application = makeApplication(arguments, argv);
    return runLine(allCommands(), arguments);
}
