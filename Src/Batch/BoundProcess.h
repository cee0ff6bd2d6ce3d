#pragma once

#include "Platform/childProcess.h"

#include <QCoreApplication>
#include <QProcess>

namespace corv {

/// A process that does not outlive the program which starts it, however that one ends.
class BoundProcess : public QProcess
{
public:
    using QProcess::QProcess;

protected:
    void setupChildProcess() override { platform::endWithParent(m_parent); }

private:
    const qint64 m_parent = QCoreApplication::applicationPid();
};

} // namespace corv
