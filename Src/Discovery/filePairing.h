#pragma once

#include <QDateTime>
#include <QFileInfo>
#include <QList>
#include <QString>
#include <functional>
#include <vector>

namespace corv {

/// What a file system says of a file. A time alone is one of unknown size.
struct FileState
{
    FileState() = default;
    FileState(const QDateTime& lastWrite, qint64 size = -1) : time(lastWrite), sizeBytes(size) {}

    QDateTime time;        ///< of the last write; invalid if unknown
    qint64 sizeBytes = -1; ///< -1 if unknown
};

/// A file with the time it was last changed, asked for once. Without a time it pairs with nothing.
struct TimedFile
{
    QFileInfo file;
    QDateTime time;
    qint64 timeMs = 0;     ///< milliseconds of the epoch; means nothing if `time` is invalid
    QString timeText;      ///< as the log writes it
    qint64 sizeBytes = -1; ///< -1 if unknown
};

/// The files by ascending time, those of equal time in the order given, those without one last.
std::vector<TimedFile> sortedByTime(const QList<QFileInfo>& files,
                                    const std::function<FileState(const QFileInfo&)>& stateOf);

/// The position in `logs`, which are sorted by time, of the log that belongs to the video: the
/// nearest one from 0 to 1799 seconds after it, of equally near ones the first. -1 if there is
/// none. Differences are taken in their low 32 bits. Takes logarithmic time.
int pairedLog(const TimedFile& video, const std::vector<TimedFile>& logs);

/// Pairs every video with its log, in order, and logs what was weighed. Gives
/// the position of the log for each video, or -1.
///
/// Each video is listed with every log as long as that stays readable; in a search of thousands of
/// files it would be millions of lines, so there only the logs next to each video are.
std::vector<int> pairVideosWithLogs(const std::vector<TimedFile>& videos,
                                    const std::vector<TimedFile>& logs);

} // namespace corv
