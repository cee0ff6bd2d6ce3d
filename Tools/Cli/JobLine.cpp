#include "Cli/JobLine.h"

#include "Review/JobList.h"

namespace corv::cli {

JobLine::JobLine(const JobList& jobs) : m_line(stderr)
{
    if (m_line.isTerminal())
        connect(&jobs, &JobList::dataChanged, this, &JobLine::show);
}

void JobLine::show(const QModelIndex& row)
{
    const QString progress = row.data(JobList::ProgressTextRole).toString();
    const bool isRunning = row.data(JobList::StateRole).toInt() == Job::Running;
    m_line.show(isRunning && !progress.isEmpty()
                    ? row.data(JobList::TitleRole).toString() + QStringLiteral(": ") + progress
                    : QString());
}

} // namespace corv::cli
