#pragma once

#include "Review/Job.h"

#include <QAbstractListModel>
#include <deque>
#include <functional>
#include <memory>

namespace corv {

/// The jobs of this run of the program, the newest last. Ended ones stay until there are more than
/// `keptJobs` of them. Owns its jobs. Interface thread only.
class JobList : public QAbstractListModel
{
    Q_OBJECT
    Q_PROPERTY(int running READ running NOTIFY runningChanged)
    Q_PROPERTY(int writing READ writing NOTIFY runningChanged)

public:
    enum Role {
        JobRole = Qt::UserRole + 1,
        TitleRole,
        DoneRole,
        TotalRole,
        ProgressTextRole,
        StateRole,
        ResultTextRole
    };

    static constexpr int keptJobs = 50;

    explicit JobList(QObject* parent = nullptr);
    ~JobList() override;

    int rowCount(const QModelIndex& parent = QModelIndex()) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QHash<int, QByteArray> roleNames() const override;

    /// How many have not ended.
    int running() const;

    /// How many of these write something.
    int writing() const;

    /// Null if there is no such row. Valid until the job has ended and is no longer kept.
    Q_INVOKABLE corv::Job* job(int row) const;

    /// Begins a job. `cancel` and `target` as for `Job`.
    Job* start(Job::Kind kind, const QString& title, Job::Unit unit = Job::Unit::steps,
               std::function<void()> cancel = {}, const QString& target = QString());

signals:
    void runningChanged();

private:
    void update(const Job* job, bool hasEnded);
    void dropOldest();

    std::deque<std::unique_ptr<Job>> m_jobs;
};

} // namespace corv
