#pragma once

#include <QDateTime>
#include <QString>
#include <optional>

/// What is kept of a crash: one text file beside the diagnostic log, with the signal, the stack of
/// the thread that crashed and the last lines of the log. It stays on this machine.
namespace corv::crashReport {

/// What the file of an earlier run says in short.
struct Summary
{
    QString filePath; ///< the whole report
    QDateTime moment; ///< when the program crashed
    QString reason;   ///< "not enough memory", or the name of the signal, such as "SIGSEGV"
};

/// Writes "Vistrel-crash.PROCESS.txt", with the number of this process, into the folder of
/// `logFilePath` when the program crashes, and lets it crash then as it would have. The report gets
/// this name when it is complete. Of several threads that crash, the first is reported. Once, at
/// the start, after the log is open. Does nothing in a build with sanitizers, which have reports of
/// their own.
void install(const QString& logFilePath);

/// The latest of the reports that crashed runs left beside `logFilePath`. All are moved aside, as
/// "Vistrel-crash-" and the time, so that each crash is returned once, and their stacks are written
/// with the names of the sources; the five latest are kept. Nothing if no run has crashed since the
/// last call. Interface thread.
std::optional<Summary> take(const QString& logFilePath);

/// The sentences for the pilot: what happened, where it is written down, that nothing was sent.
QString notice(const Summary& summary);

} // namespace corv::crashReport
