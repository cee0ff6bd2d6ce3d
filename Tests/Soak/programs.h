#pragma once

#include <QProcess>
#include <QString>
#include <QStringList>

namespace corv::soak {

constexpr int longestMs = 120'000;

/// How a program ended.
enum class End {
    success,   ///< exit status 0
    failure,   ///< another status
    killed,    ///< by us
    crashed,   ///< by a signal that was not ours, or by a sanitizer
    stillRuns, ///< it did not end in two minutes and was killed
};

/// Runs a program to its end, or kills it after `killAfterMs` if that is not negative. With
/// `fileLimitBytes` no file of the program can grow past that, as on a disk that is full. `error`
/// gets what it wrote to its standard error.
End runProgram(const QString& program, const QStringList& arguments, const QString& temporaryFolder,
               int killAfterMs, qint64 fileLimitBytes, QString* error);

/// What has gone wrong in a folder that reports, pictures and projects were written into: a file
/// that is not whole. Empty if all are.
QString whatIsBroken(const QString& folder);

} // namespace corv::soak
