#pragma once

#include "Review/JobList.h"
#include "Review/ownedFiles.h"
#include "Threads/pool.h"

#include <QObject>
#include <QPointer>
#include <QString>
#include <QStringList>
#include <QTimer>

namespace corv {

/// Keeps on disk which jobs are writing something, so that the next start can say what was not
/// finished when the program was quit, or killed. Its file is there only while such a job runs, and
/// is written on the pool; a job of less than half a second leaves none. Interface thread only.
class JobJournal : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::JobList* jobs READ jobs WRITE setJobs)
    Q_PROPERTY(QString folder READ folder WRITE setFolder)
    Q_PROPERTY(QString standardFolder READ standardFolder CONSTANT)
    Q_PROPERTY(QString unfinishedText READ unfinishedText NOTIFY unfinishedTextChanged)

public:
    explicit JobJournal(QObject* parent = nullptr);
    ~JobJournal() override;

    /// Not owned; once.
    JobList* jobs() const { return m_jobs; }
    void setJobs(JobList* jobs);

    /// Where the files are. Empty, as at first: nowhere. Setting it reads what earlier runs left
    /// there, and removes it.
    QString folder() const { return m_folder; }
    void setFolder(const QString& folder);

    /// The place for it in the user's data.
    static QString standardFolder();

    /// What earlier runs did not finish, in a sentence. Empty if nothing, or once it was seen.
    QString unfinishedText() const { return m_unfinishedText; }

    /// The text is not needed any more.
    Q_INVOKABLE void forgetUnfinished();

signals:
    void unfinishedTextChanged();

private:
    void update();
    void write();
    void stopFollowing();

    QPointer<JobList> m_jobs;
    QString m_folder;
    OwnedFile m_place;
    QStringList m_lines;   ///< one for each job that runs
    QStringList m_written; ///< those that the file has
    QTimer m_timer;        ///< until they are written
    PoolTask m_writing;
    QString m_unfinishedText;
};

} // namespace corv
