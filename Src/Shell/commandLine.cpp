#include "Shell/commandLine.h"

#include "Shell/AppInfo.h"

#include <QCommandLineParser>
#include <QUrl>

namespace corv {
namespace {

const char usage[] = "usage: vistrel [FILE]\n";

const char help[] = R"(
Plays the video of an inspection flight together with its flight log. FILE is a
video (.mp4, .mov) or a project (.ecor), as a path or a file: address.

  -h, --help     shows this
  -v, --version  shows the version

The same work without a window: vistrel-cli --help.
)";

CommandLine refusal(const QString& reason)
{
    return {CommandLine::Wish::refuse, {}, QString::fromLatin1(usage) + reason + QLatin1Char('\n')};
}

QString pathOf(const QString& argument)
{
    const QUrl address(argument);
    return address.isLocalFile() ? address.toLocalFile() : argument;
}

} // namespace

CommandLine readCommandLine(const QStringList& arguments)
{
    QCommandLineParser line;
    // An option of Qt, such as -reverse, is no bundle of letters with a v in it.
    line.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    const QCommandLineOption helpOption(QStringList{QStringLiteral("h"), QStringLiteral("help")});
    const QCommandLineOption versionOption(
        QStringList{QStringLiteral("v"), QStringLiteral("version")});
    line.addOption(helpOption);
    line.addOption(versionOption);
    const bool understood = line.parse(arguments);
    if (line.isSet(helpOption))
        return {CommandLine::Wish::showText, {}, QString::fromLatin1(usage) + QLatin1String(help)};
    if (line.isSet(versionOption)) {
        const QString version = QStringLiteral("vistrel %1\n").arg(AppInfo().versionString());
        return {CommandLine::Wish::showText, {}, version};
    }
    if (!understood)
        return refusal(line.errorText());
    const QStringList files = line.positionalArguments();
    if (files.size() > 1)
        return refusal(QStringLiteral("Only one file can be opened."));
    return {CommandLine::Wish::openWindow, files.isEmpty() ? QString() : pathOf(files.first()), {}};
}

} // namespace corv
