#include "Review/OpenFlight.h"

#include "Base/sameFile.h"
#include "Threads/pool.h"
#include "Threads/post.h"

#include <QEventLoop>
#include <algorithm>
#include <atomic>

namespace corv {
namespace {

bool isProject(const QString& file)
{
    return file.endsWith(QLatin1String(".ecor"), Qt::CaseInsensitive);
}

} // namespace

OpenFlight::OpenFlight()
{
    m_player.setLogParser(&m_logParser);
    m_review.setVideoPlayer(&m_player);
    m_review.setLogParser(&m_logParser);
    m_review.setProjectFiles(&m_projectFiles);
    ReviewProperties().applyTo(m_player);
    // Nobody looks at thumbnails here, and each costs a frame to be read.
    m_review.pois()->setVideoPlayer(nullptr);
}

bool OpenFlight::isFlight(const QStringList& files)
{
    const bool hasOption = std::any_of(files.begin(), files.end(), [](const QString& file) {
        return file.startsWith(QLatin1String("--"));
    });
    if (hasOption || files.isEmpty())
        return false;
    return files.size() == 1 || (files.size() == 2 && !isProject(files[0]));
}

Status OpenFlight::open(const QStringList& files, const QString& target)
{
    const Status opened = openFiles(files);
    if (opened && isOneOfFiles(target, m_review.openedFiles() + files))
        return Failure{Failure::Kind::notWritable,
                       target + QStringLiteral(": is a file of the flight itself")};
    return opened;
}

Status OpenFlight::openFiles(const QStringList& files)
{
    Status result;
    if (isProject(files[0]))
        result = openProject(files[0]);
    else if (const auto problem = fileProblem(QStringLiteral("The video"), files[0]))
        return *problem;
    else
        result = waitForOpening([&] { m_review.openFlight(files[0], files.value(1)); });
    const std::optional<Failure>& logProblem = m_review.openProblem();
    return result && logProblem ? Status(*logProblem) : result;
}

Status OpenFlight::openParts(const QStringList& videos, const QString& log)
{
    for (const QString& video : videos)
        if (const auto problem = fileProblem(QStringLiteral("The video"), video))
            return *problem;
    m_player.setNextFiles(videos);
    return waitForOpening([&] { m_review.openFlight(videos.first(), log); });
}

Status OpenFlight::openProject(const QString& path)
{
    return waitForOpening([&] { m_review.openProject(path); });
}

Status OpenFlight::waitForOpening(const std::function<void()>& begin)
{
    QEventLoop loop;
    Status result;
    bool isDone = false;
    const auto finish = [&](const Status& status) {
        if (isDone)
            return;
        result = status;
        isDone = true;
        loop.quit();
    };
    QObject::connect(&m_review, &Review::opened, &loop, [&] { finish({}); });
    QObject::connect(&m_review, &Review::openFailed, &loop,
                     [&](const Failure& failure) { finish(failure); });
    begin();
    if (!isDone)
        loop.exec();
    // The pictures of a flight need its thermal frames, too.
    QObject::connect(&m_player, &VideoPlayer::thermalStatusChanged, &loop, &QEventLoop::quit);
    while (result && m_player.isThermalStatusPending())
        loop.exec();
    return result;
}

// The writer waits for each frame, so it has a thread of its own while this one runs an event loop.
Status OpenFlight::writeReport(const QString& path, const QVariantList& pois,
                               const ReportWriter::Progress& progress)
{
    const std::atomic<bool> abortFlag{false};
    const QVariantMap naming = m_logParser.flightNaming();
    Status status;
    QEventLoop loop;
    const PoolTask task = runOnPool([&, naming] {
        ReportWriter writer(&abortFlag);
        writer.writeWordReport(path, &m_player, pois, naming, [&](int done, int total) {
            post(&loop, [&progress, done, total] { progress(done, total); });
        });
        post(&loop, [&status, &loop, result = writer.result()] {
            status = result;
            loop.quit();
        });
    });
    loop.exec();
    task.waitForDone();
    return status;
}

} // namespace corv
