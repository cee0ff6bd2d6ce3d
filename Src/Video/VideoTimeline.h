#pragma once

#include "Video/VideoBackend.h"

#include <QSizeF>
#include <QString>
#include <QStringList>
#include <memory>
#include <vector>

namespace corv {

/// One opened file of a flight and its place on the timeline.
struct VideoFileEntry
{
    QString file;
    std::unique_ptr<FrameSource> capture; ///< kept open until the sources are closed
    int frameCount = 0;
    double fps = 0.0;
    int durationMs = 0;       ///< rounded down
    int firstFrameIndex = 0;  ///< frames of all earlier entries
    double startMs = 0.0;     ///< exact duration of all earlier entries
    double lengthMs = 0.0;    ///< exact
    bool keepsOneRate = true; ///< so do all files of the timeline

    /// Time on the timeline of the frame that is `fileMs` into the file, rounded down: once, or,
    /// where all files keep one rate, in the file and on the timeline.
    int timelineMs(double fileMs) const;
};

/// The files of a flight as one row of frames, without gaps. Used on the worker's thread.
class VideoTimeline
{
public:
    /// Opens one more file, as one of `files`; a failure is a line in the log, too. Its place is
    /// not known before it is measured.
    Status open(const QString& file, int files, const VideoBackend& backend);

    /// Whether the file opened last has been measured, or none is open.
    bool isMeasured() const { return m_measured == size(); }

    /// Gives the file opened last its place; waits for its index.
    void measure();

    void close();

    bool isEmpty() const { return m_entries.empty(); }
    int size() const { return static_cast<int>(m_entries.size()); }
    VideoFileEntry& entry(int position) { return m_entries[static_cast<size_t>(position)]; }

    int totalFrames() const { return m_totalFrames; }
    double fps() const;                         ///< of the first file; 0 without one
    QSizeF frameSize() const { return m_size; } ///< of the first file

    /// Length of the whole, rounded down: the number of frames at the first file's rate where all
    /// files keep that rate, else the sum of the files' true lengths.
    int durationMs() const;

    /// The number of the frame that belongs to a time; the first or the last frame for a time
    /// outside. A time on a join belongs to the later file.
    int frameAtTime(int timeMs) const;

    /// The position of the file that holds a frame; of the first or the last file for a frame
    /// outside. Only if there is a file.
    int fileOfFrame(int frameIndex) const;

    /// The position of the file that a seek to a time goes to, or -1: the first whose end is not
    /// before it, so that a time on a join belongs to the earlier file. The last file also takes
    /// what lies between its end and the end of the timeline as the player announces it.
    int fileForSeek(int timeMs) const;

    /// The position of the file that a seek to a frame goes to, or -1. The number behind a file's
    /// last frame still belongs to it.
    int fileForFrame(int frameIndex) const;

    /// The position of the file that holds the picture of a time, or -1 behind the end. A time on a
    /// join belongs to the later file.
    int fileForPicture(int timeMs) const;

private:
    int fileOfTime(int timeMs) const;
    bool keepsOneRate() const;

    std::vector<VideoFileEntry> m_entries;
    int m_measured = 0; // entries
    int m_totalFrames = 0;
    QSizeF m_size;
};

} // namespace corv
