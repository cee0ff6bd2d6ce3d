#pragma once

#include "Cli/TerminalLine.h"

#include <QModelIndex>
#include <QObject>

namespace corv {
class JobList;
}

namespace corv::cli {

/// Shows on a terminal how the newest job of a list is going, in a line on standard error that goes
/// with the object. The list outlives it.
class JobLine : public QObject
{
public:
    explicit JobLine(const JobList& jobs);

private:
    void show(const QModelIndex& row);

    TerminalLine m_line;
};

} // namespace corv::cli
