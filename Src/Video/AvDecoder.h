#pragma once

#include "Video/AvInput.h"

#include <memory>

struct AVCodecParameters;

namespace corv {

/// The decoder of one video stream. Packets carry a number, and each picture comes back with that
/// of its packet, whatever the times in the file. Used by one thread at a time; decodes on as many
/// threads as the machine has.
class AvDecoder
{
public:
    /// Null if there is no decoder for the stream.
    static std::unique_ptr<AvDecoder> open(const AVCodecParameters& parameters);

    /// Whether decoders of this kind give pictures that are built on missing ones, and do not say
    /// so.
    static bool replacesMissing(const AVCodecParameters& parameters);

    /// What a receive() gave.
    enum class Outcome {
        picture,
        damaged, ///< no picture: one of the last delay() packets was damaged
        needsPacket,
        end
    };

    /// The next picture in the order of the screen. Call it until it needs a packet before the next
    /// send().
    Outcome receive(AVFrame& picture);

    /// The number of the packet of a picture.
    static int numberOf(const AVFrame& picture);

    /// Whether the decoder had to guess parts of a picture.
    static bool isBroken(const AVFrame& picture);

    /// Hands over a packet, whose times are overwritten. With `skipUnreferenced` no picture comes
    /// of it if no other one is built on it. False if the decoder took a packet for damaged: this
    /// one or one of the last delay() packets.
    bool send(AVPacket& packet, int number, bool skipUnreferenced);

    /// After the last packet: the pictures still inside follow, and then the end.
    void sendEnd();

    /// Forgets all packets, for a start at another place.
    void flush();

    /// How many packets may be in work at once, besides the last.
    int delay() const;

private:
    AvDecoder() = default;

    AvCodecContextPtr m_context;
};

} // namespace corv
