#include "Discovery/DirectoryParser.h"

#include "Discovery/PersistentData.h"
#include "Discovery/cardLayouts.h"
#include "Discovery/flightSearch.h"
#include "Discovery/logCategory.h"
#include "Threads/post.h"

#include <QDebug>
#include <QThread>
#include <QTimer>
#include <utility>

namespace corv {
namespace {

// A search that has not ended so long after its abort waits for its medium.
constexpr int longestUnwindingMs = 150;

} // namespace

struct DirectoryParser::Result
{
    bool matched = false; ///< there were videos and logs, so the matcher ran
    QList<FlightMatchData> matches;
    QVariantList rows;
    QStringList remarks;
};

/// Takes what a search reports, on the parser's thread, for as long as there is a parser. The
/// search may outlive it.
class DirectoryParser::Listener : public QObject
{
public:
    explicit Listener(DirectoryParser* parser) : m_parser(parser) {}

    void leave() { m_parser = nullptr; }

    /// Runs `job` on the thread of the parser, unless the parser is gone by then. Called from the
    /// threads of the search.
    void postToParser(std::function<void(DirectoryParser& parser)> job)
    {
        post(this, [this, job = std::move(job)] {
            if (m_parser)
                job(*m_parser);
        });
    }

private:
    DirectoryParser* m_parser;
};

std::shared_ptr<DirectoryParser::Listener> DirectoryParser::makeListener()
{
    return {new Listener(this), [](Listener* listener) {
                if (listener->thread() == QThread::currentThread())
                    delete listener;
                else
                    listener->deleteLater();
            }};
}

DirectoryParser::DirectoryParser(QObject* parent) : DirectoryParser(Machine(), parent) {}

DirectoryParser::DirectoryParser(Machine machine, QObject* parent)
    : QObject(parent), m_machine(std::move(machine)), m_listener(makeListener())
{
    if (!m_machine.hasDriveService)
        return;
    m_driveService = std::make_unique<platform::DriveService>();
    connect(m_driveService.get(), &platform::DriveService::changed, this,
            &DirectoryParser::drivesChanged);
}

DirectoryParser::~DirectoryParser()
{
    if (m_abortRequested)
        m_abortRequested->store(true, std::memory_order_relaxed);
    m_listener->leave();
    if (!m_search.isDoneWithin(longestUnwindingMs))
        m_search.replaceThread();
}

void DirectoryParser::parseDirectories(QString videoDirectory, QString logDirectory,
                                       bool videoFromDrive, bool logFromDrive, bool quickMode)
{
    if (m_abortRequested) {
        qCWarning(lcDiscovery) << "Previous parsing didn't finish!";
        return;
    }
    // A flag of its own for each search: whatever an aborted one has still on its way stays silent
    // after the next one has started.
    const auto abortRequested = std::make_shared<std::atomic<bool>>(false);
    m_abortRequested = abortRequested;
    const auto reportProgress = [listener = m_listener, abortRequested](
                                    int file, int files, int step, int done, int total) {
        listener->postToParser([=](DirectoryParser& parser) {
            if (!abortRequested->load(std::memory_order_relaxed))
                emit parser.matchingProgress(file, files, step, done, total);
        });
    };
    const auto reportVideo = [listener = m_listener, abortRequested](int video, int videos) {
        listener->postToParser([=](DirectoryParser& parser) {
            if (!abortRequested->load(std::memory_order_relaxed))
                emit parser.videoProgress(video, videos);
        });
    };
    m_search = runOnPool(
        [listener = m_listener, abortRequested, reportProgress, reportVideo, quickMode,
         facts = m_machine.files,
         locations = SearchLocations{videoDirectory, logDirectory, videoFromDrive, logFromDrive}] {
            qCInfo(lcDiscovery) << "Starting the directory parser";
            const auto result = std::make_shared<Result>();
            const FlightFiles files = gatherFlightFiles(locations);
            QStringList lostFiles;
            result->matched = !files.videos.isEmpty() && !files.logs.isEmpty();
            if (result->matched) {
                FlightFilesMatcher matcher(abortRequested.get(), facts);
                result->matches = matcher.matchFlightFiles(files.videos, files.logs, quickMode,
                                                           reportProgress, reportVideo);
                result->rows = matchingRows(result->matches);
                lostFiles = matcher.lostFiles();
            }
            result->remarks = corv::searchRemarks(locations, files, lostFiles);
            listener->postToParser([result, abortRequested](DirectoryParser& parser) {
                parser.endSearch(*result, *abortRequested);
            });
        });
    emit searchingChanged();
}

void DirectoryParser::endSearch(const Result& result, const std::atomic<bool>& abortRequested)
{
    // The worker has nothing left to do but to return. A search started from a slot of the signal
    // below is not to be refused for that.
    m_search.waitForDone();
    m_abortRequested.reset();
    if (result.matched)
        PersistentData::instance()->setDirectoryList(result.matches);
    afterDirectoriesParsed(result, abortRequested);
    if (!isSearching())
        emit searchingChanged();
}

void DirectoryParser::afterDirectoriesParsed(const Result& result,
                                             const std::atomic<bool>& abortRequested)
{
    if (abortRequested.load(std::memory_order_relaxed)) {
        qCInfo(lcDiscovery) << "Aborted (directoryParser)";
        return;
    }
    if (!result.remarks.isEmpty())
        emit searchRemarks(result.remarks);
    emit matchingComplete(result.rows);
}

QVariantList DirectoryParser::recallPersistentDirectoryList()
{
    return matchingRows(PersistentData::instance()->getDirectoryList());
}

QVariantList DirectoryParser::getDrives()
{
    QVariantList drives;
    const QList<platform::Volume> volumes = m_machine.volumes();
    const QHash<QByteArray, bool> removable =
        m_driveService ? m_driveService->removableDevices() : QHash<QByteArray, bool>();
    for (const platform::Volume& volume : volumes) {
        const auto known = removable.constFind(volume.device);
        const int type = known == removable.constEnd()
                             ? platform::driveType(volume.device, m_machine.sysfsRoot)
                         : *known ? platform::driveRemovable
                                  : platform::driveFixed;
        drives.append(QVariantMap{{QStringLiteral("name"), volume.name},
                                  {QStringLiteral("path"), volume.rootPath},
                                  {QStringLiteral("type"), type}});
    }
    return drives;
}

QVariantMap DirectoryParser::autodetectDrivesWithData()
{
    QVariantList withLogs;
    QVariantList withVideos;
    const QVariantList drives = getDrives();
    for (const QVariant& entry : drives) {
        QVariantMap drive = entry.toMap();
        if (drive[QStringLiteral("type")].toInt() != platform::driveRemovable) {
            qCInfo(lcDiscovery) << "Skipping non-removable drive:" << drive;
            continue;
        }
        qCInfo(lcDiscovery) << "Analyzing" << drive;
        for (const CardLayout& layout : cardLayouts()) {
            const QList<QFileInfo> files = findFiles(drive[QStringLiteral("path")].toString(),
                                                     layout.subPath, layout.extension);
            if (files.isEmpty())
                continue;
            qCInfo(lcDiscovery) << layout.droneModel << "eligible; files:" << files;
            drive[QStringLiteral("droneModel")] = layout.droneModel;
            (layout.kind == CardLayout::Log ? withLogs : withVideos).append(drive);
        }
    }
    return {{QStringLiteral("logs"), withLogs}, {QStringLiteral("videos"), withVideos}};
}

void DirectoryParser::abortParsing()
{
    if (m_abortRequested) {
        m_abortRequested->exchange(true);
        // A hung search is not to keep the pool's threads from everybody else.
        QTimer::singleShot(longestUnwindingMs, this,
                           [search = m_search] { search.replaceThread(); });
    }
    qCInfo(lcDiscovery) << "Aborting...";
}

} // namespace corv
