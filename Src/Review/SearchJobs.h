#pragma once

#include "Review/JobList.h"

#include <QObject>
#include <QPointer>
#include <QVariantList>

namespace corv {

class DirectoryParser;

/// Puts the searches for flights into the list of jobs. Parser and list are set once and not owned.
/// Interface thread only.
class SearchJobs : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::DirectoryParser* parser READ parser WRITE setParser)
    Q_PROPERTY(corv::JobList* jobs READ jobs WRITE setJobs)

public:
    explicit SearchJobs(QObject* parent = nullptr);

    /// A search that runs on is no longer listed as running.
    ~SearchJobs() override;

    DirectoryParser* parser() const;
    void setParser(DirectoryParser* parser);
    JobList* jobs() const { return m_jobs; }
    void setJobs(JobList* jobs) { m_jobs = jobs; }

private:
    void follow();
    void report(int current, int total);
    void succeed(const QVariantList& matchings);
    void abandon();

    QPointer<DirectoryParser> m_parser;
    QPointer<JobList> m_jobs;
    QPointer<Job> m_job;
};

/// What a search found, in a sentence, from the rows of `DirectoryParser::matchingComplete`.
QString textOfMatchings(const QVariantList& matchings);

} // namespace corv
