#include "Video/AvFrameSource.h"

#include "Video/AvDecoder.h"
#include "Video/AvInput.h"
#include "Video/AvVideo.h"
#include "Video/DamagedPackets.h"
#include "Video/FrameIndexTask.h"
#include "Video/PictureParser.h"
#include "Video/avPicture.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <QFileInfo>
#include <algorithm>
#include <cmath>
#include <utility>

namespace corv {
namespace {

// Attempts to come before a keyframe that the container's own search overshot.
constexpr int mostSeekAttempts = 4;

class AvFrameSource : public FrameSource
{
public:
    explicit AvFrameSource(std::shared_ptr<AvVideo> video) : m_video(std::move(video)) {}

    Status open();
    bool openClone();

    double fps() const override { return m_video->fps; }
    int frameCount() const override { return index().frameCount(); }
    QSize size() const override { return m_video->form.size; }
    QSize pixelAspectRatio() const override { return m_video->pixelAspectRatio; }
    bool isConstantRate() const override { return index().isConstantRate(); }
    double frameTimeMs(int frame) const override { return index().timeMs(frame); }
    int frameAtTime(double ms) const override { return index().frameAtTime(ms); }
    int nearestKeyframe(int frame) const override { return index().keyframeAtOrBefore(frame); }
    bool isIndexReady() const override { return m_video->index->isReady(); }
    double indexProgress() const override { return m_video->index->progress(); }
    int nextFrame() const override { return m_next; }
    bool seekToFrame(int frame) override;
    ReadOutcome read(Frame& frame) override;
    Failure failure() const override;
    std::unique_ptr<FrameSource> clone() const override;

private:
    enum class Step { picture, end, failed, overshot };

    const FrameIndex& index() const { return m_video->index->wait(); }
    Status decodeFirst();
    bool isKeyframeAwaited();
    void noteFields(PictureParser& parser);
    Status readIndex(int first);
    Status startReadingThrough(int first);
    Step decodeNext(int wanted);
    int numberOnScreen(int packet) const;
    Step takePicture(int wanted);
    Step feed(int wanted);
    ReadOutcome decodeFrom(int start, int wanted);
    bool isLeftInside(Step step, int wanted) const;
    int startFor(int frame) const;
    bool isStartSpread();
    int placeBefore(int packet) const;
    bool startAt(int packet);
    bool reopen();
    void forgetPosition();
    void markDamage(int from, int last);
    void markSuspects();
    bool isOnTheWay(int frame) const;
    ReadOutcome readLastGoodBefore(int wanted);
    ReadOutcome deliver(Frame& frame);

    std::shared_ptr<AvVideo> m_video;
    std::unique_ptr<AvInput> m_input;
    std::unique_ptr<AvDecoder> m_decoder;
    AvPacketPtr m_packet{av_packet_alloc()};
    AvFramePtr m_picture{av_frame_alloc()};
    AvFramePtr m_lastGood{av_frame_alloc()}; // seen on the way to the wanted one
    int m_lastGoodFrame = -1;

    int m_next = 0;         // the frame about to be read
    bool m_sought = false;  // not by reading on
    bool m_waiting = false; // m_picture holds the frame about to be read
    int m_waitingFrame = 0;

    bool m_hasKeyframe = false; // of what is decoded first
    bool m_hasFields = false;
    qint64 m_lastDts = FrameIndex::noTime;

    bool m_isKeySpread = false; // what a look at a keyframe has shown
    bool m_isKeyWhole = false;

    int m_start = 0;      // the packet that decoding began at
    int m_expected = 0;   // the packet that probably comes next
    int m_lastSent = -1;  // the packet that the decoder got last
    int m_lastShown = -1; // the frame that the decoder gave last
    bool m_inPlace = false;
    bool m_isFresh = false;      // a new input was asked for at this start
    bool m_isMediumLost = false; // by the last reading
    bool m_isDrained = false;
    bool m_isHeld = false; // m_packet is behind a seam, and the decoder is emptied before
    int m_seam = -1;       // the last packet of that kind
    DamagedPackets m_damage;
};

Status AvFrameSource::open()
{
    Result<std::unique_ptr<AvInput>> input = m_video->openInput();
    if (!input)
        return input.failure();
    m_input = std::move(*input);
    const Status described = m_video->describe(*m_input);
    if (!described)
        return described;
    Result<std::unique_ptr<AvDecoder>> decoder = m_video->openDecoder();
    if (!decoder)
        return decoder.failure();
    m_decoder = std::move(*decoder);
    if (m_video->packetsAsStored)
        m_input->takePacketsAsStored();
    m_input->rewind();
    const Status decoded = decodeFirst();
    if (!decoded)
        return decoded;
    m_video->setSize(QSize(m_picture->width, m_picture->height));
    const int first = m_inPlace ? AvDecoder::numberOf(*m_picture) : 0;
    const Status indexed = m_video->isReadThrough ? startReadingThrough(first) : readIndex(first);
    if (!indexed)
        return indexed;
    m_waiting = m_inPlace;
    m_waitingFrame = 0;
    m_lastShown = 0;
    return {};
}

// The index of a container that describes its packets. The first one whose frame arrives is
// `first`.
Status AvFrameSource::readIndex(int first)
{
    Result<FrameIndex> stored = m_video->readStoredIndex();
    if (!stored)
        return stored.failure();
    // A damaged head need not describe the packet that has come.
    if (first >= stored->packetCount() || m_video->doPicturesKnowBetter(*stored))
        return startReadingThrough(first);
    stored->hideFramesBefore(first);
    stored->finish(m_video->fps);
    if (stored->frameCount() == 0)
        return Failure{Failure::Kind::damaged,
                       QStringLiteral("%1: The video has no picture.").arg(m_video->file)};
    m_video->index = std::make_unique<FrameIndexTask>(std::move(*stored));
    return {};
}

// Starts to read a container through that does not describe its packets well enough, on a pool
// thread.
Status AvFrameSource::startReadingThrough(int first)
{
    Result<std::unique_ptr<ByteSource>> bytes = m_video->openBytes(m_video->file);
    if (!bytes)
        return bytes.failure();
    m_video->index = std::make_unique<FrameIndexTask>(
        std::move(*bytes), QFileInfo(m_video->file).fileName(), first, m_video->fps);
    return {};
}

// The first picture that comes; packets are numbered as they come, since there is no index yet. A
// damaged start is decoded again with it.
Status AvFrameSource::decodeFirst()
{
    m_inPlace = true;
    PictureParser parser(*m_video->parameters);
    for (;;) {
        const AvDecoder::Outcome outcome = m_decoder->receive(*m_picture);
        if (outcome == AvDecoder::Outcome::picture) {
            m_inPlace =
                m_inPlace && !AvDecoder::isBroken(*m_picture) && m_decoder->takeGuessed().empty();
            return {};
        }
        if (outcome == AvDecoder::Outcome::end)
            return m_video->whyNoPicture(*m_input, *m_decoder);
        if (outcome == AvDecoder::Outcome::damaged) {
            m_inPlace = false;
            continue;
        }
        const AvInput::Outcome read = m_input->next(*m_packet);
        if (read == AvInput::Outcome::failed)
            return failure();
        if (read == AvInput::Outcome::end && m_lastSent >= 0 && isKeyframeAwaited()) {
            m_hasKeyframe = true; // there is none: better these pictures than none at all
            m_lastSent = -1;
            m_input->rewind();
            continue;
        }
        if (read == AvInput::Outcome::end) {
            m_decoder->sendEnd();
            m_isDrained = true;
            continue;
        }
        noteFields(parser);
        ++m_lastSent;
        m_expected = m_lastSent + 1;
        if (isKeyframeAwaited())
            continue;
        if (!m_decoder->send(*m_packet, m_lastSent, false))
            m_inPlace = false;
    }
}

// Whether the packet comes before the first keyframe and must not be decoded: what precedes it, a
// decoder of this kind replaces by grey.
bool AvFrameSource::isKeyframeAwaited()
{
    m_hasKeyframe = m_hasKeyframe || m_packet->flags & AV_PKT_FLAG_KEY;
    return !m_hasKeyframe && AvDecoder::replacesMissing(*m_video->parameters);
}

// Where each half of a frame is a packet of its own, the container does not say which ones belong
// together, and the rate that it states is that of the halves.
void AvFrameSource::noteFields(PictureParser& parser)
{
    const qint64 before = std::exchange(m_lastDts, m_packet->dts);
    if (!parser.look(*m_packet).isSecondField || m_hasFields)
        return;
    m_hasFields = true;
    m_video->isReadThrough = true;
    if (before == AV_NOPTS_VALUE || m_packet->dts == AV_NOPTS_VALUE)
        return;
    const double seconds =
        static_cast<double>(m_packet->dts - before) * av_q2d(m_input->video()->time_base);
    if (std::abs(seconds * m_video->fps - 1.0) < 0.1)
        m_video->fps /= 2.0;
}

bool AvFrameSource::openClone()
{
    return reopen();
}

bool AvFrameSource::reopen()
{
    forgetPosition();
    Result<std::unique_ptr<AvInput>> input = m_video->openInput();
    if (!input)
        return false;
    if (m_input && (*input)->sizeBytes() != m_input->sizeBytes())
        return false; // another file of that name
    m_input = std::move(*input);
    m_isMediumLost = false;
    if (m_video->packetsAsStored)
        m_input->takePacketsAsStored();
    else
        m_input->probe();
    m_input->rewind();
    if (m_decoder)
        return true;
    Result<std::unique_ptr<AvDecoder>> decoder = m_video->openDecoder();
    if (decoder)
        m_decoder = std::move(*decoder);
    return decoder.ok();
}

std::unique_ptr<FrameSource> AvFrameSource::clone() const
{
    auto copy = std::make_unique<AvFrameSource>(m_video);
    if (!copy->openClone())
        return nullptr;
    return copy;
}

Failure AvFrameSource::failure() const
{
    return {Failure::Kind::unreadable,
            QStringLiteral("%1: The file can no longer be read.").arg(m_video->file)};
}

bool AvFrameSource::seekToFrame(int frame)
{
    if (frame != m_next) // else without waiting for the index
        m_next = std::clamp(frame, 0, frameCount());
    m_sought = true;
    return true;
}

ReadOutcome AvFrameSource::read(Frame& frame)
{
    if (m_waiting && m_next == m_waitingFrame)
        return deliver(frame);
    m_waiting = false;
    const FrameIndex& frames = index();
    if (m_next >= frames.frameCount())
        return ReadOutcome::end;
    const ReadOutcome outcome =
        isOnTheWay(m_next) ? decodeFrom(-1, m_next) : decodeFrom(startFor(m_next), m_next);
    switch (outcome) {
    case ReadOutcome::frame:
        return deliver(frame);
    case ReadOutcome::failed:
        return outcome;
    case ReadOutcome::end:
        break;
    }
    if (m_sought && readLastGoodBefore(m_next) == ReadOutcome::frame)
        return deliver(frame);
    m_next = frames.frameCount();
    return ReadOutcome::end;
}

ReadOutcome AvFrameSource::deliver(Frame& frame)
{
    Frame result = frameOf(*m_picture, m_video->form);
    m_waiting = false;
    if (result.isNull())
        return ReadOutcome::failed;
    result.index = m_waitingFrame;
    // The first picture does not wait for the index.
    result.timeMs = m_waitingFrame == 0 ? 0.0 : index().timeMs(m_waitingFrame);
    m_next = m_waitingFrame + 1;
    m_sought = false;
    frame = std::move(result);
    return ReadOutcome::frame;
}

// Whether reading on leads to the frame, with no keyframe to start at in between.
bool AvFrameSource::isOnTheWay(int frame) const
{
    return m_inPlace && frame > m_lastShown && index().startFor(frame) <= m_lastSent + 1;
}

/// Decodes up to `wanted` or the first good frame behind it, from the packet `start` on or, if that
/// is below 0, from where the decoder is.
ReadOutcome AvFrameSource::decodeFrom(int start, int wanted)
{
    m_lastGoodFrame = -1;
    int attempt = start;
    bool isRetried = false;
    for (int attempts = 0;; ++attempts) {
        if (attempt >= 0 && !startAt(attempt))
            return ReadOutcome::failed;
        const int sentBefore = m_lastSent;
        const Step step = decodeNext(wanted);
        if (isLeftInside(step, wanted) && attempts < mostSeekAttempts) {
            attempt = index().startBefore(m_start);
            continue;
        }
        switch (step) {
        case Step::picture:
            m_waiting = true;
            return ReadOutcome::frame;
        case Step::end:
            return ReadOutcome::end;
        case Step::failed:
            // A card that was pulled out may be back already.
            m_isMediumLost = true;
            if (m_lastSent != sentBefore || std::exchange(isRetried, true)) {
                forgetPosition();
                return ReadOutcome::failed;
            }
            attempt = startFor(wanted);
            break;
        case Step::overshot:
            // The keyframe before; in the end the start of the file, for which a new input may be
            // needed.
            m_isMediumLost = m_isMediumLost || m_start == 0;
            attempt = attempts < mostSeekAttempts ? index().startBefore(m_start) : 0;
            break;
        }
    }
}

// Shortly behind a keyframe that others reach across, a decoder that is at the end keeps pictures
// that it has decoded; and where keyframes are spread over many frames, these can be more than up
// to the next one. A decoder that begins earlier gives them.
bool AvFrameSource::isLeftInside(Step step, int wanted) const
{
    const bool isMissing = step == Step::end || (step == Step::picture && m_waitingFrame > wanted);
    return isMissing && (m_isDrained || m_seam >= 0 || m_isKeySpread) && m_start > 0 &&
           m_damage.isEmpty();
}

// Where keyframes are spread over many frames, whole pictures come only some frames behind the
// packet that counts as one: the decoding begins at the one before.
int AvFrameSource::startFor(int frame) const
{
    const int start = index().startFor(frame);
    return m_isKeySpread ? index().startBefore(start) : start;
}

// Whether the first packet that is sent is no whole picture. Asked of one per file.
bool AvFrameSource::isStartSpread()
{
    if (m_isKeySpread || m_isKeyWhole)
        return false;
    PictureParser parser(*m_video->parameters);
    m_isKeySpread = !parser.look(*m_packet).isWhole;
    m_isKeyWhole = !m_isKeySpread;
    return m_isKeySpread;
}

// A packet to seek to, so that this one is read whole and known for what it is. Where packets begin
// inside blocks, the rest of another one comes first behind a seek.
int AvFrameSource::placeBefore(int packet) const
{
    const FrameIndex& frames = index();
    int place = packet;
    if (m_input->cutsAnywhere())
        while (place > 0 && frames.packet(place).position >= frames.packet(packet).position)
            --place;
    return place;
}

bool AvFrameSource::startAt(int packet)
{
    // What was opened on a card that was pulled out stays dead when the card is back.
    m_isFresh = m_isMediumLost;
    if (m_isMediumLost)
        reopen();
    forgetPosition();
    m_decoder->flush();
    const FrameIndex::Packet& at = index().packet(placeBefore(packet));
    const bool positioned =
        packet == 0 ? m_input->rewind() : m_input->seek(at.storedDts(), at.position);
    if (!positioned && !(packet > 0 && m_input->rewind()) && !reopen())
        return false;
    m_start = packet;
    m_expected = m_input->cutsAnywhere() ? -1 : packet;
    m_lastShown = packet == 0 ? -1 : index().firstFrameFrom(packet) - 1;
    m_inPlace = true;
    return true;
}

void AvFrameSource::forgetPosition()
{
    m_inPlace = false;
    m_isDrained = false;
    m_start = 0;
    m_lastSent = -1;
    m_lastShown = -1;
    m_isHeld = false;
    m_seam = -1;
    m_damage.clear();
}

AvFrameSource::Step AvFrameSource::decodeNext(int wanted)
{
    for (;;) {
        const AvDecoder::Outcome outcome = m_decoder->receive(*m_picture);
        for (const int packet : m_decoder->takeGuessed())
            markDamage(packet, packet);
        switch (outcome) {
        case AvDecoder::Outcome::picture:
            if (takePicture(wanted) == Step::picture)
                return Step::picture;
            break;
        case AvDecoder::Outcome::damaged:
            markSuspects();
            break;
        case AvDecoder::Outcome::end:
        case AvDecoder::Outcome::needsPacket:
            if (m_isHeld) {
                m_decoder->flush();
                m_damage.clear();
            } else if (outcome == AvDecoder::Outcome::end || m_isDrained) {
                m_inPlace = false;
                return Step::end;
            }
            const Step step = feed(wanted);
            if (step != Step::picture)
                return step;
            break;
        }
    }
}

// The number of a packet's picture, which has just come. Where the container has no times, or equal
// ones, the order in which pictures come is all that is known.
int AvFrameSource::numberOnScreen(int packet) const
{
    if (!index().hasTimes())
        return m_lastShown + 1;
    const int frame = index().packet(packet).frame;
    if (frame < 0)
        return frame;
    const auto [first, last] = index().framesAtTimeOf(frame);
    return first == last ? frame : std::clamp(m_lastShown + 1, first, last);
}

/// Looks at the picture that the decoder gave; `picture` if it is the wanted one or one behind it.
AvFrameSource::Step AvFrameSource::takePicture(int wanted)
{
    const int packet = AvDecoder::numberOf(*m_picture);
    if (packet < 0 || packet >= index().packetCount())
        return Step::end;
    if (AvDecoder::isBroken(*m_picture))
        markDamage(packet, packet);
    const int frame = numberOnScreen(packet);
    if (frame <= m_lastShown || m_damage.isDoubtful(index(), packet))
        return Step::end;
    m_lastShown = frame;
    if (frame < wanted) {
        av_frame_unref(m_lastGood.get());
        av_frame_move_ref(m_lastGood.get(), m_picture.get());
        m_lastGoodFrame = frame;
        return Step::end;
    }
    m_waitingFrame = frame;
    return Step::picture;
}

/// Gives the decoder one packet, or the end; `picture` if it may go on.
AvFrameSource::Step AvFrameSource::feed(int wanted)
{
    const FrameIndex& frames = index();
    for (;;) {
        const AvInput::Outcome outcome =
            std::exchange(m_isHeld, false) ? AvInput::Outcome::packet : m_input->next(*m_packet);
        if (outcome == AvInput::Outcome::failed)
            return Step::failed;
        if (outcome == AvInput::Outcome::end) {
            m_decoder->sendEnd();
            m_isDrained = true;
            return Step::picture;
        }
        const int packet = frames.find(m_packet->pos, m_packet->dts, m_packet->pts, m_expected);
        if (packet >= 0)
            m_expected = packet + 1;
        if (packet < m_start || packet <= m_lastSent)
            continue; // before the start, or none that the index knows
        if (m_lastSent < 0 && packet > m_start) {
            if (m_start > 0 || !m_isFresh)
                return Step::overshot;
            if (!frames.packet(packet).isKey) // the start of the file is lost
                continue;
            m_lastShown = frames.firstFrameFrom(packet) - 1;
        }
        if (m_lastSent < 0 && packet > 0 && isStartSpread())
            return Step::overshot;
        // A decoder takes what follows a seam for what followed the packet before.
        if (m_lastSent >= 0 && packet != m_seam && m_video->packetsAsStored &&
            frames.isAtSeam(packet)) {
            m_isHeld = true;
            m_seam = packet;
            m_decoder->sendEnd();
            return Step::picture;
        }
        // Where two recordings meet, their counters of packets do not fit, and nothing is lost.
        if (m_packet->flags & AV_PKT_FLAG_CORRUPT && !frames.isAtJoin(packet))
            markDamage(packet, packet);
        const int frame =
            frames.packet(frames.packet(packet).isSecondField ? packet - 1 : packet).frame;
        const bool isOnlyPassedBy = frame >= 0 && frame < frames.framesAtTimeOf(wanted).first &&
                                    frames.hasTimes() && !frames.isPacked();
        if (!m_decoder->send(*m_packet, packet, isOnlyPassedBy))
            markSuspects();
        m_lastSent = packet;
        return Step::picture;
    }
}

void AvFrameSource::markDamage(int from, int last)
{
    m_damage.mark(index(), from, last, m_decoder->delay());
}

// Where a packet has lost its beginning, the one before may have lost its end, and need not show
// it: also if that one is a keyframe.
void AvFrameSource::markSuspects()
{
    const auto [first, last] = m_decoder->suspects();
    markDamage(std::max(first - 1, 0), last);
}

// No good frame follows: the last one before is held.
ReadOutcome AvFrameSource::readLastGoodBefore(int wanted)
{
    int start = startFor(wanted);
    while (m_lastGoodFrame < 0) {
        if (start == 0)
            return ReadOutcome::end;
        start = index().startBefore(start);
        const ReadOutcome outcome = decodeFrom(start, wanted);
        if (outcome != ReadOutcome::end)
            return outcome;
    }
    av_frame_unref(m_picture.get());
    av_frame_move_ref(m_picture.get(), m_lastGood.get());
    m_waitingFrame = m_lastGoodFrame;
    return ReadOutcome::frame;
}

} // namespace

Result<std::unique_ptr<FrameSource>> openAvFrameSource(const QString& file,
                                                       const ByteSourceFactory& openBytes)
{
    auto video = std::make_shared<AvVideo>();
    video->file = file;
    video->openBytes = openBytes;
    auto source = std::make_unique<AvFrameSource>(std::move(video));
    const Status opened = source->open();
    if (!opened)
        return opened.failure();
    return std::unique_ptr<FrameSource>(std::move(source));
}

} // namespace corv
