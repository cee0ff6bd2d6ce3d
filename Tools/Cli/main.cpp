#include "Cli/Command.h"

#include <QCoreApplication>

namespace corv::cli {
namespace {

std::vector<Command> allCommands()
{
    std::vector<Command> commands;
    for (const auto& set : {logCommands(), matchCommands(), projectCommands(), frameCommands(),
                            reportCommands(), reviewCommands()})
        commands.insert(commands.end(), set.begin(), set.end());
    return commands;
}

} // namespace
} // namespace corv::cli

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    using namespace corv::cli;
    return runLine(allCommands(), QCoreApplication::arguments());
}
