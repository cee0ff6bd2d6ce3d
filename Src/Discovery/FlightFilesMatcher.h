#pragma once

#include "Discovery/FlightMatchData.h"
#include "Discovery/filePairing.h"
#include "Log/LogSyncResult.h"

#include <QDateTime>
#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>
#include <atomic>
#include <functional>
#include <vector>

namespace corv {

/// Length of one video file.
struct VideoLength
{
    int coarseMs = -1;   ///< whole seconds as `VideoInfoReader` counts them; -1 if it does not open
    qint64 exactMs = -1; ///< -1 if unknown
    bool isLost = false; ///< as `LogFacts` has it
};

/// What pairing and naming need of one log.
struct LogFacts
{
    bool read = false;
    bool isLost = false; ///< has gone, or reading failed in the middle, as of a card pulled out
    bool describesRecordings = false; ///< so that a log without a recording saw none
    std::vector<RecEvent> recordings;
    QList<FlightNamingEvent> namings;
};

/// Decides which log belongs to which video: by file times, and where the logs are read also by the
/// lengths of their recordings. Names the flights from those logs.
///
/// Made for one call, on the worker thread of a search.
class FlightFilesMatcher
{
public:
    using FlightMatchData = corv::FlightMatchData;

    /// currentFile, totalFiles, currentFileStep, currentFileProgress, currentFileTotal: which log
    /// is being read, of how many, and the decoder's stage, done and total. Called on the worker
    /// thread.
    using Progress = std::function<void(int, int, int, int, int)>;
    /// Which video's length is being read, of how many. Called on the worker thread.
    using VideoProgress = std::function<void(int, int)>;
    using LogStages = std::function<void(int stage, int done, int total)>;

    /// What the matcher asks of the files themselves. Lengths and logs are asked for on any thread.
    struct FileFacts
    {
        /// When the file was last written, which not every copy keeps, and its size.
        std::function<FileState(const QFileInfo&)> state = stateOnDisk;
        std::function<VideoLength(const QString&)> videoLength = readVideoLength;
        /// Reads a log; ends early once the flag is set.
        std::function<LogFacts(const QString&, const std::atomic<bool>*, const LogStages&)> log =
            readLogFacts;
        int readers = coresOfMachine(); ///< logs that are read at the same time
    };

    /// Another thread may set `abortFlag` at any time; it must outlive the call.
    explicit FlightFilesMatcher(const std::atomic<bool>* abortFlag);
    FlightFilesMatcher(const std::atomic<bool>* abortFlag, FileFacts facts);

    /// One entry per video, by ascending file time; an empty list after an abort, never a part.
    /// In quick mode no file is opened: durations stay 0 and namings undefined. A log or a video
    /// that cannot be read leaves its flights in the list, without a naming; doubtful, if it has
    /// gone or failed in the middle. Logs that the times give to no video are read only where the
    /// others leave a question open.
    QList<FlightMatchData> matchFlightFiles(const QList<QFileInfo>& videos,
                                            const QList<QFileInfo>& logs, bool quickMode,
                                            const Progress& progress,
                                            const VideoProgress& videoProgress = {});

    /// The videos and logs that were found, but had gone or failed in the middle when they were
    /// read. Empty before `matchFlightFiles`.
    const QStringList& lostFiles() const { return m_lostFiles; }

private:
    struct Search;

    static FileState stateOnDisk(const QFileInfo& file);
    static VideoLength readVideoLength(const QString& path);
    static LogFacts readLogFacts(const QString& path, const std::atomic<bool>* abortFlag,
                                 const LogStages& stages);
    static int coresOfMachine();
    bool isAbortRequested() const;
    bool hasAborted() const;
    Search pair(const QList<QFileInfo>& videos, const QList<QFileInfo>& logs, bool quickMode) const;
    void readLengths(Search& search, const VideoProgress& progress);
    bool readLogs(Search& search, size_t from, size_t end, const Progress& progress) const;
    static bool canOthersShowLostTimes(const Search& search);
    bool weigh(Search& search, const Progress& progress) const;
    static void decide(Search& search);
    void doubtLostFiles(Search& search) const;
    bool nameFlights(Search& search) const;

    const std::atomic<bool>* m_abortFlag;
    FileFacts m_facts;
    QStringList m_lostFiles;
};

} // namespace corv
