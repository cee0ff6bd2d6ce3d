#include "Review/OpenFlight.h"

#include "Base/sameFile.h"
#include "Base/videoTime.h"
#include "Threads/post.h"
#include "Video/pictureFile.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QImage>
#include <algorithm>

namespace corv {
namespace {

constexpr int msPerDay = 24 * 60 * 60 * 1000;

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
    m_reports.setVideoPlayer(&m_player);
    m_exports.setPlayer(&m_player);
    m_exports.setReports(&m_reports);
    m_exports.setJobs(m_review.jobs());
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

QList<Status> OpenFlight::savePictures(const QList<PictureFile>& pictures)
{
    const int total = pictures.size();
    Job* const job = m_review.jobs()->start(
        total == 1 ? Job::Kind::frames : Job::Kind::series,
        total == 1 ? Review::tr("Save a picture") : Review::tr("Save pictures"), Job::Unit::steps,
        {}, total > 0 ? QFileInfo(pictures.first().file).path() : QString());
    QList<Status> results;
    QStringList withOtherThermal;
    for (const PictureFile& picture : pictures) {
        results << Status();
        if (m_player.savesOtherThermal(timeOfMs(picture.timeMs)))
            withOtherThermal << QFileInfo(picture.file).fileName();
    }
    int answered = 0;
    QEventLoop loop;
    const auto answer = [&](int index, const Status& saved) {
        results[index] = saved;
        job->report(++answered, total);
        if (answered == total)
            loop.quit();
    };
    for (int i = 0; i < total; ++i) {
        const auto save = [&loop, answer, i, picture = pictures[i]](const QImage& image) {
            const Status saved =
                image.isNull()
                    ? Failure{Failure::Kind::unreadable,
                              QStringLiteral("There is no picture at %1 ms.").arg(picture.timeMs)}
                    : savePictureFile(image, picture.file);
            post(&loop, [answer, i, saved] { answer(i, saved); });
        };
        // The times of the player begin anew after a day.
        if (pictures[i].timeMs >= msPerDay ||
            !m_player.getExportFrameAsync(timeOfMs(pictures[i].timeMs), save))
            save(QImage());
    }
    if (total > 0)
        loop.exec();
    endPictures(job, results);
    m_exportNote = VideoPlayer::otherThermalNote(withOtherThermal);
    return results;
}

void OpenFlight::endPictures(Job* job, const QList<Status>& results)
{
    const auto isMissing = [](const Status& saved) { return !saved; };
    const auto first = std::find_if(results.begin(), results.end(), isMissing);
    if (first == results.end()) {
        m_exportResult = {};
        job->succeed(Review::tr("%1 pictures saved.").arg(results.size()));
        return;
    }
    const auto missing = std::count_if(first, results.end(), isMissing);
    Failure failure = first->failure();
    if (missing > 1)
        failure.sentence = Review::tr("%1 of %2 pictures failed; the first: %3")
                               .arg(missing)
                               .arg(results.size())
                               .arg(failure.sentence);
    if (missing < results.size())
        failure.kind = Failure::Kind::incomplete;
    m_exportResult = failure;
    job->fail(failure);
}

Status OpenFlight::writeVideo(const QString& path)
{
    QEventLoop loop;
    bool isWritten = false;
    // The signal comes from the worker's thread; queued, it arrives on this one.
    QObject::connect(
        &m_player, &VideoPlayer::videoExportComplete, &loop,
        [&](bool result) {
            isWritten = result;
            loop.quit();
        },
        Qt::QueuedConnection);
    m_player.exportVideo(path);
    loop.exec();
    m_exportNote.clear();
    m_exportResult = m_player.videoExportResult();
    if (m_exportResult && !isWritten)
        m_exportResult = Failure{Failure::Kind::other,
                                 QStringLiteral("The video %1 was not written.").arg(path)};
    return m_exportResult;
}

Status OpenFlight::writeReport(const QString& path, const QVariantList& pois)
{
    QEventLoop loop;
    QObject::connect(&m_reports, &PoiReportExporter::exportComplete, &loop, &QEventLoop::quit);
    m_reports.createPoiReport(pois, path, m_logParser.flightNaming());
    loop.exec();
    m_exportNote = m_reports.reportNote();
    m_exportResult = m_reports.exportResult();
    return m_exportResult;
}

} // namespace corv
