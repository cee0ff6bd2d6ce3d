#include "Review/MissingMedia.h"

#include "Project/mediaSearch.h"
#include "Threads/post.h"

#include <QFileInfo>
#include <utility>

namespace corv {
namespace {

/// "a", "a and b", "a, b and c", "a, b, c and 4 more".
QString listed(const QStringList& paths)
{
    constexpr int mostNames = 3;
    QStringList names;
    for (const QString& path : paths.mid(0, mostNames))
        names << QFileInfo(path).fileName();
    if (paths.size() > mostNames)
        names << QStringLiteral("%1 more").arg(paths.size() - mostNames);
    const QString last = names.takeLast();
    return names.isEmpty() ? last
                           : names.join(QStringLiteral(", ")) + QStringLiteral(" and ") + last;
}

} // namespace

MissingMedia::MissingMedia(JobList& jobs, QObject* parent) : QObject(parent), m_jobs(jobs) {}

MissingMedia::~MissingMedia()
{
    stop();
    m_search.waitForDone();
    m_look.waitForDone();
}

void MissingMedia::offer(const QString& projectPath, const ProjectContents& project)
{
    stop();
    const QStringList missing = project.missingFiles();
    if (missing.isEmpty()) {
        dismiss();
        return;
    }
    m_project = project;
    m_projectPath = projectPath;
    m_offer = std::make_shared<bool>();
    seeMissing(missing);
}

void MissingMedia::seeMissing(const QStringList& missing)
{
    m_missing = missing;
    m_text = missingText();
    emit changed();
}

QString MissingMedia::missingText() const
{
    const QString name =
        QFileInfo(m_projectPath.isEmpty() ? m_project->videoFile : m_projectPath).fileName();
    return m_missing.isEmpty() ? tr("The missing files of %1 are back.").arg(name)
                               : tr("Files of %1 are missing: %2.").arg(name, listed(m_missing));
}

void MissingMedia::lookAgain()
{
    if (!m_project || m_isSearching || m_look.isRunning())
        return;
    m_look = runOnPool([this, project = *m_project, offer = m_offer] {
        post(this, [this, missing = project.missingFiles(), offer] {
            // Another project may have been opened since, or a search may have begun.
            if (offer == m_offer && !m_isSearching && missing != m_missing)
                seeMissing(missing);
        });
    });
}

void MissingMedia::openAgain()
{
    if (areBack())
        emit openWanted(QString(m_projectPath));
}

void MissingMedia::locate(const QString& folder)
{
    if (!m_project || m_isSearching || folder.isEmpty())
        return;
    m_isSearching = true;
    m_isCancelled = std::make_shared<std::atomic<bool>>(false);
    m_job = m_jobs.start(Job::Kind::search, tr("Look for missing files in %1").arg(folder),
                         Job::Unit::steps, [isCancelled = m_isCancelled] { *isCancelled = true; });
    emit changed();
    m_search = runOnPool([this, folder, project = *m_project, isCancelled = m_isCancelled] {
        const ProjectContents found = withMediaIn(project, folder, *isCancelled);
        post(this, [this, folder, found, isCancelled] {
            // Another project may have been opened since.
            if (isCancelled == m_isCancelled)
                finish(folder, found);
        });
    });
}

void MissingMedia::finish(const QString& folder, const ProjectContents& found)
{
    const bool wasCancelled = *m_isCancelled;
    m_isCancelled.reset();
    m_isSearching = false;
    Job* const job = std::exchange(m_job, nullptr);
    const int wanted = m_project->missingFiles().size();
    const QStringList missing = found.missingFiles();
    const int count = wanted - missing.size();
    if (wasCancelled) {
        job->fail({Failure::Kind::cancelled, tr("The search was cancelled.")});
        emit changed();
    } else if (count <= 0) {
        m_text = tr("Not found in %1: %2.").arg(folder, listed(missing));
        job->fail({Failure::Kind::notFound, m_text});
        emit changed();
    } else {
        job->succeed(tr("%1 of %2 missing files found.").arg(count).arg(wanted));
        const QString path = m_projectPath;
        offer(path, found);
        emit located(path, found);
    }
}

void MissingMedia::dismiss()
{
    stop();
    m_project.reset();
    m_offer.reset();
    m_projectPath.clear();
    m_missing.clear();
    m_text.clear();
    emit changed();
}

/// What a search that still runs finds is not waited for.
void MissingMedia::stop()
{
    if (m_isCancelled)
        *m_isCancelled = true;
    m_isCancelled.reset();
    m_isSearching = false;
    if (m_job)
        m_job->fail({Failure::Kind::cancelled, tr("The search was cancelled.")});
    m_job = nullptr;
}

} // namespace corv
