#include "Cli/diagnostics.h"

#include <QtGlobal>
#include <atomic>
#include <cstdio>

namespace corv::cli {
namespace {

bool isVerbose = false;
QString rememberedError;

void handle(QtMsgType type, const QMessageLogContext&, const QString& message)
{
    if (isVerbose || type == QtFatalMsg)
        std::fprintf(stderr, "%s\n", message.toLocal8Bit().constData());
    // Commands work on one thread; what others say of errors is not theirs.
    static const QString kError = QStringLiteral("ERROR: ");
    if (message.startsWith(kError))
        rememberedError = message.mid(kError.size()).simplified();
}

} // namespace

void installDiagnostics(bool verbose)
{
    isVerbose = verbose;
    qInstallMessageHandler(handle);
}

QString lastError()
{
    return rememberedError;
}

} // namespace corv::cli
