#pragma once

#include <QByteArray>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

namespace corv::test {

/// What a program that was run to its end left behind.
struct ProgramRun
{
    int status = -1; ///< its exit status; -1 if it crashed, did not start or did not end
    QByteArray out;
    QByteArray error;
};

/// Runs a program for two minutes at most, in the folder of the test if none is named.
ProgramRun
runProgram(const QString& program, const QStringList& arguments,
           const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment(),
           const QString& folder = QString());

} // namespace corv::test
