#pragma once

#include <QString>

namespace corv {

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

    /// The exact length in milliseconds, as the player has it: the time of the last frame and its
    /// duration. Read from the description of the packets in MP4, MOV and 3GP files, in a tenth of
    /// a second for an hour; in other containers, as their head states it. Decodes nothing. -1 if
    /// the file cannot be opened.
    double exactDurationMs() const;

private:
    QString m_file;
};

} // namespace corv
