#include "Cli/diagnostics.h"

#include <QString>
#include <QtGlobal>
#include <cstdio>

namespace corv::cli {
namespace {

bool isVerbose = false;

void handle(QtMsgType type, const QMessageLogContext&, const QString& message)
{
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

} // namespace corv::cli
