#include "Cli/Command.h"
#include "Cli/diagnostics.h"
#include "Cli/insets.h"
#include "Project/ReportFolder.h"

#include <QFile>
#include <QGuiApplication>
#include <QTextCodec>
#include <memory>

namespace corv::cli {
namespace {

/// A variable of the environment that has another value for a time.
class VariableForATime
{
public:
    VariableForATime(const char* name, const QByteArray& value)
        : m_name(name), m_wasSet(qEnvironmentVariableIsSet(name)), m_before(qgetenv(name))
    {
        qputenv(name, value);
    }
    ~VariableForATime() { m_wasSet ? qputenv(m_name, m_before) : qunsetenv(m_name); }
    VariableForATime(const VariableForATime&) = delete;
    VariableForATime& operator=(const VariableForATime&) = delete;

private:
    const char* m_name;
    bool m_wasSet;
    QByteArray m_before;
};

// Texts in pictures need fonts, which only an application for windows has; it gets a screen that is
// not there.
std::unique_ptr<QCoreApplication> makeApplication(const QStringList& arguments, char** argv)
{
    static int noArguments = 1; // the words of the line are the tool's own
    const QString verboseOption = QStringLiteral("verbose");
    QCommandLineParser line; // in the same ways of writing as the commands; the rest is theirs
    line.setSingleDashWordOptionMode(QCommandLineParser::ParseAsLongOptions);
    line.addOptions(insetOptions());
    line.addOption(QCommandLineOption(verboseOption));
    line.parse(arguments);
    if (!line.isSet(instrumentsOption) && !line.isSet(thermalBarOption))
        return std::make_unique<QCoreApplication>(noArguments, argv);
    installDiagnostics(line.isSet(verboseOption)); // of the start as well
    // The start looks for a folder of the session, and leaves one behind where there is none. One
    // that a kill leaves is removed by the next start.
    ReportFolder::sweep();
    const ReportFolder session;
    // Programs that are started from here get the environment as it was.
    const VariableForATime folder("XDG_RUNTIME_DIR", session.isValid()
                                                         ? QFile::encodeName(session.path())
                                                         : qgetenv("XDG_RUNTIME_DIR"));
    const VariableForATime platform("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(noArguments, argv);
}

} // namespace
} // namespace corv::cli

int main(int argc, char** argv)
{
    using namespace corv::cli;
    QTextCodec::setCodecForLocale(QTextCodec::codecForName("UTF-8"));
    const QStringList arguments = wordsOf(argc, argv);
    const auto application = makeApplication(arguments, argv);
    return runLine(CommandSet::all(), arguments);
}
