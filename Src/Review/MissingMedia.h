#pragma once

#include "Project/ProjectFile.h"
#include "Review/JobList.h"
#include "Threads/pool.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
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
    Q_PROPERTY(bool back READ areBack NOTIFY changed)

public:
    /// The list outlives this.
    explicit MissingMedia(JobList& jobs, QObject* parent = nullptr);

    /// Stops a search and waits for it, and for a look at the files.
    ~MissingMedia() override;

    bool isOffered() const { return m_project.has_value(); }

    /// "Files of Site.ecor are missing: CORV0001.MOV and FLIGHT01.LOG.", after a search with its
    /// outcome.
    QString text() const { return m_text; }
    bool isSearching() const { return m_isSearching; }

    /// Whether all files are where the project says, as a look at them found.
    bool areBack() const { return m_project && m_missing.isEmpty(); }

    /// Offers the search if files of the project are missing.
    void offer(const QString& projectPath, const ProjectContents& project);

    /// Searches a folder and the folders below it. Ends in `located`, or in a `text` that says that
    /// none of the files was found.
    Q_INVOKABLE void locate(const QString& folder);

    /// Looks on the pool whether the files that were missing are there: a card may be back. `text`
    /// names those that still are not.
    Q_INVOKABLE void lookAgain();

    /// Asks for the project to be opened again, if its files are back.
    Q_INVOKABLE void openAgain();

    /// Withdraws the offer, and stops a search.
    Q_INVOKABLE void dismiss();

signals:
    void changed();

    /// Some of the missing files were found: the contents with their places.
    void located(const QString& projectPath, const corv::ProjectContents& project);

    /// The files of this project are back, and the pilot wants it opened.
    void openWanted(const QString& projectPath);

private:
    void finish(const QString& folder, const ProjectContents& found);
    void seeMissing(const QStringList& missing);
    QString missingText() const;
    void stop();

    JobList& m_jobs;
    QPointer<Job> m_job;
    std::optional<ProjectContents> m_project;
    QString m_projectPath;
    QStringList m_missing; ///< when they were last looked at
    QString m_text;
    bool m_isSearching = false;
    std::shared_ptr<std::atomic<bool>> m_isCancelled;
    PoolTask m_search;
    std::shared_ptr<bool> m_offer; ///< tells one offer from another; null without one
    PoolTask m_look;
};

} // namespace corv
