#include "Cli/diagnostics.h"

#include "Threads/annotate.h"

#include <QtGlobal>
#include <atomic>
#include <cstdio>
#include <memory>

namespace corv::cli {
namespace {

bool isVerbose = false;

// Handed over by exchange: the decoder and the report's writer work on the pool.
std::atomic<QString*> rememberedError{nullptr};

void remember(const QString& error)
{
    annotateRelease(&rememberedError);
    delete rememberedError.exchange(new QString(error));
}

void handle(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (isVerbose || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
    // What a decoder or a writer gives up with; the rest is for `--verbose`.
    for (const QLatin1String mark : {QLatin1String("ERROR: "), QLatin1String("Exception: ")}) {
        if (message.startsWith(mark))
            remember(message.mid(mark.size()).simplified());
    }
    if (message.startsWith(QLatin1String("DFW export template not found")) ||
        message.startsWith(QLatin1String("Exported video is incomplete")) ||
        message.startsWith(QLatin1String("Failed to save frame to file")))
        remember(message);
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

QString lastError()
{
    const std::unique_ptr<QString> error(rememberedError.exchange(nullptr));
    annotateAcquire(&rememberedError);
    return error ? *error : QString();
}

QString lastErrorOr(const QString& otherwise)
{
    const QString error = lastError();
    return error.isEmpty() ? otherwise : error;
}

} // namespace corv::cli
