#include "Support/ProgramRun.h"

#include <QProcess>

namespace corv::test {

ProgramRun runProgram(const QString& program, const QStringList& arguments,
                      const QProcessEnvironment& environment, const QString& folder)
{
    constexpr int patienceMs = 120'000;
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    ProgramRun run;
    if (process.waitForFinished(patienceMs) && process.exitStatus() == QProcess::NormalExit)
        run.status = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.error = process.readAllStandardError();
    return run;
}

} // namespace corv::test
