#pragma once

#include "Discovery/FlightFilesMatcher.h"
#include "Platform/DriveService.h"
#include "Platform/Platform.h"
#include "Threads/pool.h"

#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariantList>
#include <QVariantMap>
#include <atomic>
#include <functional>
#include <memory>

namespace corv {

/// Searches two locations for flights: gathers the files, pairs them on a worker thread, and hands
/// back one map for each video. Also knows the drives of the machine and which of them are cards of
/// the drone. The import window owns it; all calls and signals are on the interface thread.
///
/// One search runs at a time. Its result is remembered for as long as the process lives.
class DirectoryParser : public QObject
{
    Q_OBJECT
    /// True from the start of a search until another one can start, also while an aborted one ends.
    Q_PROPERTY(bool searching READ isSearching NOTIFY searchingChanged)

public:
    /// What a search asks of the machine it runs on.
    struct Machine
    {
        std::function<QList<platform::Volume>()> volumes = platform::mountedVolumes;
        QString sysfsRoot = QStringLiteral("/sys");
        bool hasDriveService = true; ///< the system's service is asked before `sysfsRoot`
        FlightFilesMatcher::FileFacts files;
    };

    explicit DirectoryParser(QObject* parent = nullptr);
    explicit DirectoryParser(Machine machine, QObject* parent = nullptr);

    /// Aborts a running search and waits for its worker, but not for a medium that does not answer:
    /// its search ends by itself, and nothing of it is heard any more.
    ~DirectoryParser() override;

    bool isSearching() const { return m_abortRequested != nullptr; }

    /// Starts a search; `matchingComplete` ends it. Refused with a warning while one runs. A drive
    /// is searched in the layouts of the cards, a folder by itself (see `gatherFlightFiles`). All
    /// layouts have their logs in the root, so today `logFromDrive` changes nothing. In quick mode
    /// no file is opened.
    Q_INVOKABLE void parseDirectories(QString videoDirectory, QString logDirectory,
                                      bool videoFromDrive, bool logFromDrive, bool quickMode);

    /// The rows of the last search that ran to its end, whichever object ran it.
    Q_INVOKABLE QVariantList recallPersistentDirectoryList();

    /// One map with "name", "path" and "type" for each mounted volume; "type" is 2 if it is
    /// removable.
    Q_INVOKABLE QVariantList getDrives();

    /// The removable drives that hold files in the layout of a card, as lists "logs" and "videos"
    /// of the maps of `getDrives` with "droneModel" added. A drive is listed once for each layout.
    Q_INVOKABLE QVariantMap autodetectDrivesWithData();

    /// Asks a running search to stop. It ends without a signal; until then no other can start.
    Q_INVOKABLE void abortParsing();

signals:
    /// The result, in the order of the videos' file times; empty if nothing could be matched.
    void matchingComplete(QVariantList matchings);

    /// Which log is being read, of how many, with the decoder's stage, done and total.
    void matchingProgress(int currentFile, int totalFiles, int currentFileStep,
                          int currentFileProgress, int currentFileTotal);

    /// Which video's length is being read, of how many.
    void videoProgress(int currentVideo, int totalVideos);

    /// Comes before `matchingComplete` with sentences for the pilot on what the search could not
    /// read.
    void searchRemarks(QStringList remarks);

    void searchingChanged();

    /// Drives have come or gone; only where the system has a service that reports it.
    void drivesChanged();

private:
    struct Result;
    class Listener;

    std::shared_ptr<Listener> makeListener();
    void endSearch(const Result& result, const std::atomic<bool>& abortRequested);
    void afterDirectoriesParsed(const Result& result, const std::atomic<bool>& abortRequested);

    Machine m_machine;
    std::unique_ptr<platform::DriveService> m_driveService; ///< null if the machine has none
    std::shared_ptr<std::atomic<bool>> m_abortRequested; ///< of the running search, null when idle
    std::shared_ptr<Listener> m_listener;                ///< what searches post to
    PoolTask m_search;
};

} // namespace corv
