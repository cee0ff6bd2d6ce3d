#pragma once

#include <QString>

namespace corv {

struct VideoInfo;

/// The duration of one video file, without a worker, for the pairing of videos and logs. Any
/// thread, one at a time.
class VideoInfoReader
{
public:
    explicit VideoInfoReader(QString file);

    /// The duration in milliseconds, in whole seconds rounded down: promised frames over whole
    /// frames per second. Coarser than what the player says of the same file, and the pairing
    /// relies on that. -1 if the file cannot be opened.
    int getDurationMs() const;

private:
    QString m_file;
};

/// What the file says of itself; false if it cannot be opened. Any thread.
bool readVideoInfo(const QString& file, VideoInfo& info);

} // namespace corv
