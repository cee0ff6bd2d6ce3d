#pragma once

#include "Base/Result.h"
#include "Video/AvInput.h"

#include <array>
#include <atomic>
#include <deque>
#include <memory>
#include <utility>
#include <vector>

struct AVCodecParameters;

namespace corv {

/// The decoder of one video stream. Packets carry a number, and each picture comes back with that
/// of its packet, whatever the times in the file. Used by one thread at a time; decodes on as many
/// threads as the machine has.
class AvDecoder
{
public:
    /// Fails if there is no decoder for the stream, or no memory for it.
    static Result<std::unique_ptr<AvDecoder>> open(const AVCodecParameters& parameters);

    /// Whether decoders of this kind give pictures that are built on missing ones, and do not say
    /// so.
    static bool replacesMissing(const AVCodecParameters& parameters);

    /// What a receive() gave.
    enum class Outcome {
        picture,
        damaged, ///< no picture, since a packet is damaged: suspects()
        needsPacket,
        end
    };

    /// The next picture in the order of the screen. Call it until it needs a packet before the next
    /// send().
    Outcome receive(AVFrame& picture);

    /// The number of the packet of a picture.
    static int numberOf(const AVFrame& picture);

    /// Whether a picture says that the decoder had to guess parts of it. One that is shown behind
    /// others that were decoded later may not say so: takeGuessed() does.
    static bool isBroken(const AVFrame& picture);

    /// The packets, ascending, in whose pictures the decoder had to guess parts, each given once:
    /// not later than a picture that is built on one of them.
    std::vector<int> takeGuessed();

    /// Hands over a packet, whose times are overwritten. With `skipUnreferenced` no picture comes
    /// of it if no other one is built on it. False if the decoder took a packet for damaged:
    /// suspects().
    bool send(AVPacket& packet, int number, bool skipUnreferenced);

    /// After a call that said so: one of the packets from the first to the second is damaged.
    std::pair<int, int> suspects() const { return m_suspects; }

    /// After the last packet: the pictures still inside follow, and then the end.
    void sendEnd();

    /// Forgets all packets, for a start at another place.
    void flush();

    /// How many packets may be in work at once, besides the last.
    int delay() const;

    /// Whether a packet or a picture was lost for want of memory.
    bool lacksMemory() const { return m_guessed.lacksMemory(); }

    /// Packets whose pictures have guessed parts, and whether a picture found no memory. Noted by
    /// the threads of a decoder, taken by its user; both keep up with the decoding.
    class GuessedPackets
    {
    public:
        void note(int packet);
        std::vector<int> take();
        void noteLackOfMemory() { m_lacksMemory.store(true); }
        bool lacksMemory() const { return m_lacksMemory.load(); }

    private:
        std::array<std::atomic<int>, 1024> m_next{}; // the packet's number + 1 at its place, or 0
        std::atomic<bool> m_isAny{false};
        std::atomic<bool> m_lacksMemory{false};
    };

private:
    AvDecoder() = default;

    bool isInStep() const;

    GuessedPackets m_guessed; // outlives the context, whose threads use it
    AvCodecContextPtr m_context;
    std::deque<int> m_inWork; // packets, the last of which was sent last
    std::pair<int, int> m_suspects{0, 0};
};

} // namespace corv
