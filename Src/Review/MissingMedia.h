#pragma once

#include "Project/ProjectFile.h"
#include "Review/JobList.h"
#include "Threads/pool.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <atomic>
#include <memory>
#include <optional>

namespace corv {

/// Names the missing files of the project opened last, and searches a folder for them. Owned by a
/// review, which opens the project anew with the files found. Interface thread; the search runs on
/// the pool.
class MissingMedia : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool offered READ isOffered NOTIFY changed)
    Q_PROPERTY(QString text READ text NOTIFY changed)
    Q_PROPERTY(bool searching READ isSearching NOTIFY changed)

public:
    /// The list outlives this.
    explicit MissingMedia(JobList& jobs, QObject* parent = nullptr);

    /// Stops a search and waits for it.
    ~MissingMedia() override;

    bool isOffered() const { return m_project.has_value(); }

    /// "Files of Site.ecor are missing: CORV0001.MOV and FLIGHT01.LOG.", after a search with its
    /// outcome.
    QString text() const { return m_text; }
    bool isSearching() const { return m_isSearching; }

    /// Offers the search if files of the project are missing.
    void offer(const QString& projectPath, const ProjectContents& project);

    /// Searches a folder and the folders below it. Ends in `located`, or in a `text` that says that
    /// none of the files was found.
    Q_INVOKABLE void locate(const QString& folder);

    /// Withdraws the offer, and stops a search.
    Q_INVOKABLE void dismiss();

signals:
    void changed();

    /// Some of the missing files were found: the contents with their places.
    void located(const QString& projectPath, const corv::ProjectContents& project);

private:
    void finish(const QString& folder, const ProjectContents& found);
    void stop();

    JobList& m_jobs;
    QPointer<Job> m_job;
    std::optional<ProjectContents> m_project;
    QString m_projectPath;
    QString m_text;
    bool m_isSearching = false;
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
    PoolTask m_search;
};

} // namespace corv
