#include "Review/JobList.h"

#include <QQmlEngine>
#include <algorithm>
#include <iterator>
#include <utility>

namespace corv {

JobList::JobList(QObject* parent) : QAbstractListModel(parent) {}

JobList::~JobList() = default;

int JobList::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(m_jobs.size());
}

QVariant JobList::data(const QModelIndex& index, int role) const
{
    if (!checkIndex(index, CheckIndexOption::IndexIsValid | CheckIndexOption::ParentIsInvalid))
        return {};
    Job* const shown = job(index.row());
    switch (role) {
    case JobRole:
        return QVariant::fromValue<QObject*>(shown);
    case Qt::DisplayRole:
    case TitleRole:
        return shown->title();
    case DoneRole:
        return shown->done();
    case TotalRole:
        return shown->total();
    case ProgressTextRole:
        return shown->progressText();
    case StateRole:
        return static_cast<int>(shown->state());
    case ResultTextRole:
        return shown->resultText();
    default:
        return {};
    }
}

QHash<int, QByteArray> JobList::roleNames() const
{
    return {{JobRole, "job"},
            {TitleRole, "title"},
            {DoneRole, "done"},
            {TotalRole, "total"},
            {ProgressTextRole, "progressText"},
            {StateRole, "state"},
            {ResultTextRole, "resultText"}};
}

int JobList::running() const
{
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(),
                                          [](const auto& job) { return job->isRunning(); }));
}

int JobList::writing() const
{
    return static_cast<int>(std::count_if(m_jobs.begin(), m_jobs.end(), [](const auto& job) {
        return job->isRunning() && job->isWriting();
    }));
}

Job* JobList::job(int row) const
{
    return row >= 0 && row < rowCount() ? m_jobs[static_cast<size_t>(row)].get() : nullptr;
}

Job* JobList::start(Job::Kind kind, const QString& title, Job::Unit unit,
                    std::function<void()> cancel, const QString& target)
{
    dropOldest();
    auto made = std::make_unique<Job>(kind, title, unit, std::move(cancel), target);
    Job* const job = made.get();
    // The list owns it, whatever a script does with it.
    QQmlEngine::setObjectOwnership(job, QQmlEngine::CppOwnership);
    connect(job, &Job::progressChanged, this, [this, job] { update(job, false); });
    connect(job, &Job::stateChanged, this, [this, job] { update(job, true); });
    const int row = rowCount();
    beginInsertRows(QModelIndex(), row, row);
    m_jobs.push_back(std::move(made));
    endInsertRows();
    emit runningChanged();
    return job;
}

void JobList::update(const Job* job, bool hasEnded)
{
    const auto place = std::find_if(m_jobs.begin(), m_jobs.end(),
                                    [job](const auto& kept) { return kept.get() == job; });
    const int row = static_cast<int>(std::distance(m_jobs.begin(), place));
    emit dataChanged(index(row), index(row));
    if (hasEnded)
        emit runningChanged();
}

void JobList::dropOldest()
{
    const auto place = std::find_if(m_jobs.begin(), m_jobs.end(),
                                    [](const auto& job) { return !job->isRunning(); });
    if (rowCount() < keptJobs || place == m_jobs.end())
        return;
    const int row = static_cast<int>(std::distance(m_jobs.begin(), place));
    beginRemoveRows(QModelIndex(), row, row);
    // A document may still look at it during this turn of the loop.
    place->release()->deleteLater();
    m_jobs.erase(place);
    endRemoveRows();
}

} // namespace corv
