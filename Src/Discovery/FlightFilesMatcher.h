#pragma once

#include "Discovery/FlightMatchData.h"

#include <QDateTime>
#include <QFileInfo>
#include <QList>
#include <QString>
#include <atomic>
#include <functional>

namespace corv {

/// Decides which log belongs to which video, by file times alone: it is the next log after the
/// video, within half an hour. Then reads those logs for the names of the flights.
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

    /// What the matcher asks of the files themselves.
    struct FileFacts
    {
        /// When the file was last written, which a careful copy keeps; invalid if unknown.
        std::function<QDateTime(const QFileInfo&)> time = [](const QFileInfo& file) {
            return file.lastModified();
        };
        /// Duration of the video at a path, whole seconds in milliseconds, -1 if it cannot be
        /// opened.
        std::function<int(const QString&)> videoDurationMs = defaultVideoDurationMs;
    };

    /// Another thread may set `abortFlag` at any time; it must outlive the call.
    explicit FlightFilesMatcher(const std::atomic<bool>* abortFlag);
    FlightFilesMatcher(const std::atomic<bool>* abortFlag, FileFacts facts);

    /// One entry per video, by ascending file time; an empty list after an abort, never a part.
    /// In quick mode no file is opened: durations stay 0 and namings undefined. A log or a video
    /// that cannot be read leaves its flights in the list, without a naming.
    QList<FlightMatchData> matchFlightFiles(const QList<QFileInfo>& videos,
                                            const QList<QFileInfo>& logs, bool quickMode,
                                            const Progress& progress);

private:
    struct Search;

    static int defaultVideoDurationMs(const QString& path);
    bool isAbortRequested() const;
    bool hasAborted() const;
    Search pair(const QList<QFileInfo>& videos, const QList<QFileInfo>& logs) const;
    static void collectLogs(Search& search);
    void readDurations(Search& search) const;
    bool readLogs(Search& search, const Progress& progress) const;
    bool nameFlights(Search& search) const;

    const std::atomic<bool>* m_abortFlag;
    FileFacts m_facts;
};

} // namespace corv
