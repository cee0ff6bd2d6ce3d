#include "Video/OpenCvFrameWriter.h"

#include "Video/frameConversion.h"
#include "Video/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <QFileInfo>
#include <QThreadPool>
#include <exception>

namespace corv {

// Touched by the task that writes and, while none runs, by the owner.
struct OpenCvFrameWriter::Target
{
    cv::VideoWriter writer;
    cv::Mat picture; // where frames that are not BGR are converted
    int lostFrames = 0;

    void write(const Frame& frame)
    {
        try {
            writer.write(bgrView(frame, picture));
        } catch (const std::exception& error) {
            ++lostFrames;
            qCWarning(lcVideo) << "Failed to write frame:" << error.what();
        }
    }
};

OpenCvFrameWriter::OpenCvFrameWriter() : m_target(std::make_shared<Target>())
{
    // The decoding thread waits for tasks of the pool, and tasks of the pool may be waiting for
    // pictures from the decoding thread: one place more, so that the two cannot wait for each
    // other. Taken back in the destructor.
    QThreadPool::globalInstance()->releaseThread();
}

OpenCvFrameWriter::~OpenCvFrameWriter()
{
    const Status ended = finish();
    if (!ended)
        qCWarning(lcVideo).noquote() << ended.failure().sentence;
    QThreadPool::globalInstance()->reserveThread();
}

bool OpenCvFrameWriter::open(const QString& file, double fps, QSize size)
{
    try {
        // The absolute path, since "name:rest" would be taken for a protocol; and the back-end that
        // reads, since another one takes "shot001.any" for a series of pictures to be written.
        return m_target->writer.open(QFileInfo(file).absoluteFilePath().toStdString(),
                                     cv::CAP_FFMPEG, cv::VideoWriter::fourcc('m', 'p', '4', 'v'),
                                     fps, cv::Size(size.width(), size.height()), true);
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Failed to open the video for writing:" << error.what();
        return false;
    }
}

void OpenCvFrameWriter::write(const Frame& frame)
{
    m_task.waitForDone();
    m_task = runOnPool([target = m_target, frame] { target->write(frame); });
}

Status OpenCvFrameWriter::finish()
{
    m_task.waitForDone();
    try {
        m_target->writer.release();
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Failed to close the video:" << error.what();
        return Failure{Failure::Kind::notWritable,
                       QCoreApplication::translate("FrameWriter", "The video was not ended.")};
    }
    if (m_target->lostFrames == 0)
        return {};
    return Failure{
        Failure::Kind::incomplete,
        QCoreApplication::translate("FrameWriter", "%1 frames could not be written to the video.")
            .arg(m_target->lostFrames)};
}

} // namespace corv
