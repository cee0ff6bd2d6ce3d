#pragma once

#include "Base/Result.h"
#include "Video/FrameWriter.h"
#include "Video/VideoBackend.h"

#include <QSize>
#include <QString>
#include <memory>

namespace corv {

/// A video file that is being written. It has a name of its own beside the target until it is
/// whole, so that neither an earlier file is lost nor one left behind that cannot be read. Where
/// the folder takes no second file, the target is written directly. Used by one thread.
class ExportTarget
{
public:
    ExportTarget(const VideoBackend& backend, QString target);
    ~ExportTarget();
    ExportTarget(const ExportTarget&) = delete;
    ExportTarget& operator=(const ExportTarget&) = delete;

    /// A failure names the reason: the folder, the disk, or a suffix of no video format.
    Status open(double fps, QSize size);

    /// Appends a frame, which is encoded beside the caller. Only after open().
    void write(const Frame& frame);

    int writtenFrames() const { return m_written; }

    /// Whether the disk has no room for more, or had none once: what did not fit then is lost. Asks
    /// the system: not for each frame.
    bool isDiskFull();

    /// Ends the file, looks whether it can be read and gives it the target's name. A file of which
    /// nothing can be read is removed. A failure says what is missing.
    Status finish();

private:
    Failure whyNotWritten(const Failure& ofBackend);
    int readableFrames() const;
    Status rename();

    const VideoBackend& m_backend;
    const QString m_target;
    QString m_file; // what is written to
    std::unique_ptr<FrameWriter> m_writer;
    int m_written = 0;
    bool m_wasFull = false;
};

} // namespace corv
