#pragma once

#include "Video/AvInput.h"

struct AVCodecParameters;
struct AVCodecParserContext;

namespace corv {

/// Reads the heads of coded pictures, for what containers do not say. Packets are looked at one
/// after the other, in the order of the file. Used by one thread at a time.
class PictureParser
{
public:
    /// Knows H.264, HEVC and MPEG-4; of others it says nothing.
    explicit PictureParser(const AVCodecParameters& parameters);

    /// Whether it knows this kind of video.
    static bool knows(const AVCodecParameters& parameters);

    ~PictureParser();
    PictureParser(const PictureParser&) = delete;
    PictureParser& operator=(const PictureParser&) = delete;

    struct Picture
    {
        /// The second half of the frame whose first half is the packet before: no frame of its own.
        bool isSecondField = false;

        /// The packet has no picture of its own: the one at its place came with an earlier packet.
        bool isPlaceholder = false;

        /// Whether the picture needs no other one, or nothing is known of it.
        bool isWhole = true;

        /// Whether the picture says that decoding can start at it.
        bool isKey = false;

        /// Pictures are shown in this order, where it is known.
        bool hasOrder = false;
        qint64 order = 0;
    };

    Picture look(const AVPacket& packet);

private:
    void countOrder(const AVPacket& packet, Picture& picture);

    AvCodecContextPtr m_context;
    AVCodecParserContext* m_parser = nullptr;
    bool m_isFirstField = false; // the packet looked at last
    qint64 m_base = 0;           // the order of a picture that counts as 0
    qint64 m_highest = -1;       // order so far
    qint64 m_anchors = 0;        // pictures that others are built on
    qint64 m_between = 0;        // pictures since then
    bool m_isPacked = false;     // a packet had two pictures, and no placeholder came since
};

} // namespace corv
