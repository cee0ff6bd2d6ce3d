#include "Video/VideoExporter.h"

#include "Base/arithmetic.h"
#include "Video/ExportTarget.h"
#include "Video/frameConversion.h"
#include "Video/insetBlending.h"
#include "Video/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <algorithm>
#include <cmath>
#include <exception>
#include <utility>

namespace corv {
namespace {

// How many frames are written between two looks at the room on the disk.
constexpr int framesPerLook = 64;

// Times are sums of fractions, and half a place is not always exactly that.
constexpr double placeTolerance = 1e-6;

// So many places are named; of more the number is given.
constexpr int namedLosses = 5;

QString text(const char* source)
{
    return QCoreApplication::translate("VideoExporter", source);
}

} // namespace

VideoExporter::VideoExporter(const VideoBackend& backend, VideoTimeline& timeline, Hooks hooks)
    : m_backend(backend), m_timeline(timeline), m_hooks(std::move(hooks))
{
}

VideoExporter::Outcome VideoExporter::exportTo(const QString& target, int currentFile)
{
    FrameSource& current = *m_timeline.entry(currentFile).capture;
    ExportTarget output(m_backend, target);
    const Status opened = output.open(current.fps(), current.size());
    if (!opened)
        return {false, opened};
    const int savedPosition = current.nextFrame();
    m_fps = current.fps();
    writeAll(output, current.size());
    const Status status = statusOf(output, output.finish());
    return {current.seekToFrame(savedPosition), status};
}

void VideoExporter::writeAll(ExportTarget& target, QSize size)
{
    int done = 0;
    for (int file = 0; file < m_timeline.size() && !m_hooks.isCancelled() && !m_isDiskFull;
         ++file) {
        VideoFileEntry& entry = m_timeline.entry(file);
        qCInfo(lcVideo) << "Starting to export video" << entry.file;
        exportFile(entry, target, size, done);
        done += entry.frameCount;
    }
}

void VideoExporter::exportFile(VideoFileEntry& entry, ExportTarget& target, QSize size, int done)
{
    FrameSource& capture = *entry.capture;
    for (int i = 0; i < entry.frameCount && !m_hooks.isCancelled() && !m_isDiskFull;) {
        Frame frame;
        const bool isThere = capture.seekToFrame(i);
        if (!isThere || capture.read(frame) != ReadOutcome::frame) {
            if (isThere)
                qCInfo(lcVideo) << "Read failed for frame " << i;
            else
                qCInfo(lcVideo) << "Forcefully stopping at frame " << i;
            noteLoss(entry, i, entry.frameCount - 1);
            m_leftOutMs += entry.lengthMs - capture.frameTimeMs(i);
            return;
        }
        // Damage is read over: the good frame that comes may be a later one, or, where none
        // follows, an earlier one.
        if (frame.index != i)
            noteLoss(entry, i, frame.index > i ? frame.index - 1 : entry.frameCount - 1);
        i = frame.index >= i ? frame.index + 1 : entry.frameCount;
        if (frame.size == size)
            place(entry, frame, target);
        m_hooks.reportProgress(done + i, m_timeline.totalFrames());
    }
    if (capture.size() != size)
        m_leftOutMs += entry.lengthMs;
    else if (!m_hooks.isCancelled() && !m_isDiskFull)
        holdUntil(entry.startMs + entry.lengthMs, target);
}

void VideoExporter::place(const VideoFileEntry& entry, const Frame& frame, ExportTarget& target)
{
    const double timelineMs = entry.startMs + frame.timeMs;
    const int overlayMs = entry.timelineMs(frame.timeMs);
    if (m_held.isNull()) // what comes before the first frame shows that frame
        m_late = {frame, overlayMs};
    holdUntil(timelineMs, target);
    if (target.writtenFrames() > placeOf(timelineMs)) {
        m_late = {frame, overlayMs};
        return;
    }
    m_late = {};
    m_held = withEffects(frame, overlayMs);
    target.write(m_held);
    if (target.writtenFrames() % framesPerLook == 0)
        m_isDiskFull = target.isDiskFull();
}

// Fills the places before a time with the picture that is on screen there.
void VideoExporter::holdUntil(double timelineMs, ExportTarget& target)
{
    while (target.writtenFrames() < placeOf(timelineMs) && !m_hooks.isCancelled()) {
        if (!m_late.frame.isNull()) {
            m_held = withEffects(m_late.frame, m_late.overlayMs);
            m_late = {};
        }
        if (m_held.isNull())
            return;
        target.write(m_held);
    }
}

// The nearest place; of two the earlier, so that at twice the rate every second frame is exact.
int VideoExporter::placeOf(double timelineMs) const
{
    const double place = (timelineMs - m_leftOutMs) * m_fps / 1000.0;
    return truncateToInt(std::ceil(place - 0.5 - placeTolerance));
}

// A picture that nothing changes is handed over as it was decoded. Any other becomes BGR, which is
// what the writer takes, once.
Frame VideoExporter::withEffects(const Frame& frame, int timeMs)
{
    try {
        return m_hooks.changesPictures() ? drawnOn(frame, timeMs) : withInsets(frame, timeMs);
    } catch (const std::exception& error) {
        qCWarning(lcVideo) << "Exporting without effects the frame at ms" << timeMs << error.what();
        return frame;
    }
}

Frame VideoExporter::drawnOn(const Frame& frame, int timeMs)
{
    cv::Mat& picture = nextPicture();
    toBgr(frame, picture);
    m_hooks.applyEffects(picture, timeMs);
    for (const PictureInset::Part& inset : m_hooks.insets(timeMs, frame.size))
        blendInset(picture, inset);
    return bgrFrame(picture);
}

Frame VideoExporter::withInsets(const Frame& frame, int timeMs)
{
    const cv::Size size(frame.size.width(), frame.size.height());
    const std::vector<PictureInset::Part> insets = m_hooks.insets(timeMs, frame.size);
    const bool isChanged =
        std::any_of(insets.begin(), insets.end(), [&size](const PictureInset::Part& inset) {
            return !changedBy(inset, size).empty();
        });
    if (!isChanged)
        return frame;
    cv::Mat& picture = nextPicture();
    toBgr(frame, picture);
    for (const PictureInset::Part& inset : insets)
        blendInset(picture, inset);
    return bgrFrame(picture);
}

cv::Mat& VideoExporter::nextPicture()
{
    m_turn = 1 - m_turn;
    return m_pictures.at(m_turn);
}

void VideoExporter::noteLoss(const VideoFileEntry& entry, int firstFrame, int lastFrame)
{
    m_losses << text("frames %1 to %2 of %3").arg(firstFrame).arg(lastFrame).arg(entry.file);
}

Status VideoExporter::statusOf(const ExportTarget& target, const Status& finished) const
{
    if (!finished)
        return finished;
    if (m_isDiskFull)
        return Failure{
            Failure::Kind::noRoom,
            text("The disk is full. The video ends after %1 frames.").arg(target.writtenFrames())};
    if (m_hooks.isCancelled())
        return Failure{Failure::Kind::cancelled,
                       text("The export was stopped after %1 frames.").arg(target.writtenFrames())};
    if (m_losses.isEmpty())
        return {};
    QString places = QStringList(m_losses.mid(0, namedLosses)).join(QStringLiteral(", "));
    if (m_losses.size() > namedLosses)
        places += text(" and %1 more places").arg(m_losses.size() - namedLosses);
    return Failure{Failure::Kind::incomplete,
                   text("The video is written, but these could not be read: %1.").arg(places)};
}

} // namespace corv
