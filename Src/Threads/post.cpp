#include "Threads/post.h"

#include "Threads/annotate.h"

#include <QMetaObject>
#include <QObject>
#include <utility>

namespace corv {
namespace {

struct PostedJob
{
    std::function<void()> run;
};

// What Qt queues. It holds nothing but the address of the job, which serves as the token of the
// hand-over as well. Qt moves it into memory allocated after the job was released, so it releases
// once more there; it may be dropped unrun, on either thread, when the target dies; and the
// posting thread may be the last to release it, so a job that has run is destroyed right there.
class QueuedJob
{
public:
    explicit QueuedJob(std::function<void()> run) : m_job(new PostedJob{std::move(run)})
    {
        annotateRelease(m_job);
    }

    CORV_UNSYNCHRONISED QueuedJob(QueuedJob&& other) noexcept : m_job(other.m_job)
    {
        other.m_job = nullptr;
        annotateRelease(m_job);
    }

    CORV_UNSYNCHRONISED ~QueuedJob()
    {
        annotateAcquire(this);
        if (m_job) {
            annotateAcquire(m_job);
            destroy(m_job);
        }
    }

    CORV_UNSYNCHRONISED void operator()()
    {
        PostedJob* job = m_job;
        m_job = nullptr;
        annotateAcquire(job);
        runAndDestroy(job);
        annotateRelease(this);
    }

    QueuedJob(const QueuedJob&) = delete;
    QueuedJob& operator=(const QueuedJob&) = delete;
    QueuedJob& operator=(QueuedJob&&) = delete;

private:
    static void runAndDestroy(PostedJob* job)
    {
        job->run();
        delete job;
    }
    static void destroy(PostedJob* job) { delete job; }

    PostedJob* m_job;
};

} // namespace

void post(QObject* target, std::function<void()> job)
{
    QMetaObject::invokeMethod(target, QueuedJob(std::move(job)), Qt::QueuedConnection);
}

} // namespace corv
