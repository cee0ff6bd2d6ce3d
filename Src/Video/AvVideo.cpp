#include "Video/AvVideo.h"

#include "Video/AvFrameSource.h"
#include "Video/PictureParser.h"
#include "Video/packetIndex.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
}

#include <QFileInfo>
#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <utility>
#include <vector>

namespace corv {
namespace {

constexpr size_t measuredFrames = 60;

// Where to look whether the container tells the truth about keyframes and order. Of the pictures
// behind a keyframe, one of the first is shown before its predecessor if any is.
constexpr int picturePlaces = 4;
constexpr int picturesAtPlace = 4;

Failure noMemoryFor(const QString& file)
{
    return {Failure::Kind::noMemory,
            QStringLiteral("There is not enough memory for the video \"%1\".").arg(file)};
}

Failure withName(const Failure& failure, const QString& file)
{
    if (failure.kind == Failure::Kind::noMemory)
        return noMemoryFor(file);
    return {failure.kind, QStringLiteral("%1: %2").arg(file, failure.sentence)};
}

void orient(PictureForm& form, const AVStream& stream)
{
    form.rotation = 0;
    form.isMirrored = false;
    const uint8_t* data = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (!data)
        return;
    std::array<int32_t, 9> matrix{};
    std::memcpy(matrix.data(), data, sizeof matrix);
    // Only a mirror makes the determinant negative; its angle means something without it.
    const bool isMirrored =
        static_cast<double>(matrix[0]) * matrix[4] < static_cast<double>(matrix[1]) * matrix[3];
    if (isMirrored)
        av_display_matrix_flip(matrix.data(), 1, 0);
    const double angle = av_display_rotation_get(matrix.data());
    if (!std::isfinite(angle))
        return;
    const int clockwise = (static_cast<int>(std::lround(-angle)) % 360 + 360) % 360;
    if (clockwise % 90 != 0)
        return;
    form.rotation = clockwise;
    form.isMirrored = isMirrored;
}

// The rate of the first frames, where the file states none and they need not be evenly spaced; 0 if
// they have no times. Reads on from the start.
double measuredFps(AvInput& input)
{
    std::vector<qint64> times;
    AvPacketPtr packet(av_packet_alloc());
    while (times.size() < measuredFrames && input.next(*packet) == AvInput::Outcome::packet) {
        if (packet->pts != AV_NOPTS_VALUE)
            times.push_back(packet->pts);
    }
    std::sort(times.begin(), times.end());
    std::vector<double> steps;
    for (size_t i = 1; i < times.size(); ++i) {
        if (times[i] > times[i - 1])
            steps.push_back(static_cast<double>(times[i]) - static_cast<double>(times[i - 1]));
    }
    if (steps.empty())
        return 0.0;
    const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(steps.size() / 2);
    std::nth_element(steps.begin(), middle, steps.end());
    return 1.0 / (*middle * av_q2d(input.video()->time_base));
}

QSize aspectRatioOf(const AVRational& ratio, bool isTurned)
{
    if (ratio.num <= 0 || ratio.den <= 0)
        return {1, 1};
    const QSize lying(ratio.num, ratio.den);
    return isTurned ? lying.transposed() : lying;
}

} // namespace

void AvParametersDelete::operator()(AVCodecParameters* parameters) const
{
    avcodec_parameters_free(&parameters);
}

Result<std::unique_ptr<AvInput>> AvVideo::openInput() const
{
    Result<std::unique_ptr<ByteSource>> bytes = openBytes(file);
    if (!bytes)
        return bytes.failure();
    Result<std::unique_ptr<AvInput>> input =
        AvInput::open(std::move(*bytes), QFileInfo(file).fileName());
    if (!input)
        return withName(input.failure(), file);
    return input;
}

Status AvVideo::describe(AvInput& input)
{
    // Looking into the packets costs the decoding of some of them.
    const bool isKnown = input.isDescribed() || input.probe();
    const AVStream& stream = *input.video();
    fps = input.statedFps();
    if (isKnown && fps <= 0.0)
        fps = measuredFps(input);
    orient(form, stream);
    setSize(QSize(stream.codecpar->width, stream.codecpar->height));
    pixelAspectRatio = aspectRatioOf(stream.sample_aspect_ratio, form.rotation % 180 != 0);
    if (input.lacksMemory() && !isKnown)
        return noMemoryFor(file);
    if (!isKnown || form.size.isEmpty() || fps <= 0.0)
        return Failure{Failure::Kind::notRecognised,
                       QStringLiteral("%1: The file holds no video that can be read.").arg(file)};
    parameters.reset(avcodec_parameters_alloc());
    if (!parameters || avcodec_parameters_copy(parameters.get(), stream.codecpar) < 0)
        return noMemoryFor(file);
    packetsAsStored = input.describesPackets();
    isReadThrough = !packetsAsStored;
    return {};
}

void AvVideo::setSize(QSize whole)
{
    const QSize even(whole.width() & ~1, whole.height() & ~1);
    form.size = form.rotation % 180 != 0 ? even.transposed() : even;
}

Result<std::unique_ptr<AvDecoder>> AvVideo::openDecoder() const
{
    Result<std::unique_ptr<AvDecoder>> decoder = AvDecoder::open(*parameters);
    if (!decoder)
        return withName(decoder.failure(), file);
    return decoder;
}

Failure AvVideo::whyNoPicture(const AvInput& input, const AvDecoder& decoder) const
{
    if (input.lacksMemory() || decoder.lacksMemory())
        return noMemoryFor(file);
    return {Failure::Kind::damaged,
            QStringLiteral("%1: The video has no picture that can be decoded.").arg(file)};
}

Result<std::unique_ptr<AvInput>> AvVideo::openDescription() const
{
    Result<std::unique_ptr<ByteSource>> bytes = openBytes(file);
    if (!bytes)
        return bytes.failure();
    Result<std::unique_ptr<AvInput>> input = AvInput::open(
        withoutPayload(std::move(*bytes)), QFileInfo(file).fileName(), AvInput::smallBufferBytes);
    if (!input)
        return withName(input.failure(), file);
    return input;
}

Result<FrameIndex> AvVideo::readStoredIndex() const
{
    Result<std::unique_ptr<AvInput>> input = openDescription();
    if (!input)
        return input.failure();
    return readStoredIndex(**input);
}

Result<FrameIndex> AvVideo::readStoredIndex(AvInput& description) const
{
    description.takePacketsAsStored();
    FrameIndex packets;
    const Status status =
        readPacketIndex(description, packets, false, [](double) { return false; });
    if (!status)
        return withName(status.failure(), file);
    packets.setStatedLength(description.streamDurationMs());
    return packets;
}

bool AvVideo::doPicturesKnowBetter(const FrameIndex& packets) const
{
    const int count = packets.packetCount();
    const bool areAllKeys = packets.areAllKeys();
    const bool areInOrder = packets.areTimesAscending();
    if (count < 2 || !(areAllKeys || areInOrder) || !PictureParser::knows(*parameters))
        return false;
    Result<std::unique_ptr<AvInput>> input = openInput();
    if (!input)
        return false;
    (*input)->takePacketsAsStored();
    AvPacketPtr packet(av_packet_alloc());
    for (int place = 0; place < picturePlaces; ++place) {
        const FrameIndex::Packet& at =
            packets.packet(static_cast<int>(qint64(count) * place / picturePlaces));
        if (place > 0 && !(*input)->seek(at.storedDts(), at.position))
            return false;
        PictureParser parser(*parameters);
        qint64 highest = std::numeric_limits<qint64>::min();
        for (int i = 0; i < picturesAtPlace; ++i) {
            if ((*input)->next(*packet) != AvInput::Outcome::packet)
                break;
            const PictureParser::Picture picture = parser.look(*packet);
            if (picture.isSecondField)
                continue;
            if ((areAllKeys && !picture.isWhole) ||
                (areInOrder && picture.hasOrder && picture.order < highest))
                return true;
            highest = std::max(highest, picture.order);
        }
    }
    return false;
}

Result<VideoInfo> readVideoInfo(const QString& file, const ByteSourceFactory& openBytes)
{
    AvVideo video;
    video.file = file;
    video.openBytes = openBytes;
    Result<std::unique_ptr<AvInput>> description = video.openDescription();
    if (!description)
        return description.failure();
    std::unique_ptr<AvInput> probed;
    if (!(*description)->isDescribed()) {
        Result<std::unique_ptr<AvInput>> input = video.openInput();
        if (!input)
            return input.failure();
        probed = std::move(*input);
        probed->probe();
    }
    const AvInput& head = probed ? *probed : **description;
    VideoInfo info;
    info.fps = head.statedFps();
    info.promisedFrames = head.promisedFrames();
    info.durationMs = head.statedDurationMs();
    if (!head.describesPackets() && info.durationMs > 0.0)
        return info;
    Result<FrameIndex> index = video.readStoredIndex(**description);
    if (!index)
        return index.failure();
    index->finish(info.fps > 0.0 ? info.fps : 1.0);
    info.durationMs = index->timeMs(index->frameCount());
    return info;
}

} // namespace corv
