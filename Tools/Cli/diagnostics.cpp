#include "Cli/diagnostics.h"

#include "Cli/Command.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>
#include <cstdlib>

namespace corv::cli {
namespace {

bool isVerbose = false;

void handle(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (message.startsWith(QLatin1String("QThread::start: Thread creation error"))) {
        // Qt goes on as if the thread ran, and what waits for it would wait for ever.
        std::fputs("vistrel-cli: There is not enough memory: the system starts no more threads.\n",
                   stderr);
        std::_Exit(Failed);
    }
    if (isVerbose || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
}

} // namespace

void installDiagnostics(bool verbose)
{
    isVerbose = verbose;
    if (!verbose) {
        // The decoding library's own lines, which it writes past every handler.
        constexpr const char* noLine = "-8";
        qputenv("OPENCV_FFMPEG_LOGLEVEL", noLine);
    }
    qInstallMessageHandler(handle);
}

bool showsDiagnostics()
{
    return isVerbose;
}

} // namespace corv::cli
