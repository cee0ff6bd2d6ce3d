#include "Video/PictureParser.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

#include <algorithm>
#include <array>

namespace corv {
namespace {

// An MPEG-4 packet that says no more than that the picture is in the packet before.
constexpr int emptyPictureBytes = 20;

// More pictures than that do not lie between two.
constexpr qint64 anchorStep = 1 << 20;

// No keyframe has more pictures that come behind it in the file and are shown before it.
constexpr qint64 mostBefore = 1 << 10;

bool isKnown(AVCodecID codec)
{
    return codec == AV_CODEC_ID_H264 || codec == AV_CODEC_ID_HEVC || codec == AV_CODEC_ID_MPEG4;
}

bool isField(const AVCodecParserContext& parser)
{
    return parser.picture_structure == AV_PICTURE_STRUCTURE_TOP_FIELD ||
           parser.picture_structure == AV_PICTURE_STRUCTURE_BOTTOM_FIELD;
}

bool hasTwoPictures(const AVPacket& packet)
{
    constexpr std::array<uint8_t, 4> start{0, 0, 1, 0xb6};
    const uint8_t* const end = packet.data + packet.size;
    const uint8_t* const data = packet.data;
    const uint8_t* first = std::search(data, end, start.begin(), start.end());
    return first != end && std::search(first + 1, end, start.begin(), start.end()) != end;
}

} // namespace

bool PictureParser::knows(const AVCodecParameters& parameters)
{
    return isKnown(parameters.codec_id);
}

PictureParser::PictureParser(const AVCodecParameters& parameters)
{
    if (!knows(parameters))
        return;
    m_context.reset(avcodec_alloc_context3(nullptr));
    if (!m_context || avcodec_parameters_to_context(m_context.get(), &parameters) < 0)
        return;
    m_parser = av_parser_init(parameters.codec_id);
    if (m_parser)
        m_parser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
}

PictureParser::~PictureParser()
{
    av_parser_close(m_parser);
}

PictureParser::Picture PictureParser::look(const AVPacket& packet)
{
    Picture picture;
    if (!m_parser || packet.size <= 0)
        return picture;
    uint8_t* whole = nullptr;
    int bytes = 0;
    if (av_parser_parse2(m_parser, m_context.get(), &whole, &bytes, packet.data, packet.size,
                         packet.pts, packet.dts, packet.pos) < 0)
        return picture;
    picture.isWhole =
        m_parser->pict_type != AV_PICTURE_TYPE_P && m_parser->pict_type != AV_PICTURE_TYPE_B;
    const bool isIntra = m_parser->pict_type == AV_PICTURE_TYPE_I;
    picture.isKey = m_parser->key_frame == 1 || (m_parser->key_frame < 0 && isIntra);
    // The order of two fields is known once both were seen: with the second one.
    const bool isHalf = m_context->codec_id == AV_CODEC_ID_H264 && isField(*m_parser);
    picture.isSecondField = isHalf && m_isFirstField && m_parser->field_order != AV_FIELD_UNKNOWN;
    m_isFirstField = isHalf && !picture.isSecondField;
    if (!picture.isSecondField)
        countOrder(packet, picture);
    return picture;
}

void PictureParser::countOrder(const AVPacket& packet, Picture& picture)
{
    if (m_context->codec_id != AV_CODEC_ID_MPEG4) {
        const qint64 count = m_parser->output_picture_number;
        const bool isAnew = m_parser->key_frame == 1 && m_base + count <= m_highest;
        if (isAnew)
            m_base = m_highest + mostBefore - count;
        picture.order = m_base + count;
        m_highest = std::max(m_highest, picture.order);
        picture.hasOrder = true;
        return;
    }
    // Some writers put a picture that is shown before another one into the packet of that, and a
    // placeholder behind.
    picture.isPlaceholder = m_isPacked && packet.size < emptyPictureBytes;
    if (packet.size < emptyPictureBytes && !picture.isPlaceholder)
        return;
    m_isPacked = !picture.isPlaceholder && (m_isPacked || hasTwoPictures(packet));
    // What others are built on is shown behind what follows it in the file.
    const bool isBetween = picture.isPlaceholder || m_parser->pict_type == AV_PICTURE_TYPE_B;
    m_anchors += isBetween ? 0 : 1;
    m_between = isBetween ? m_between + 1 : 0;
    picture.order = (m_anchors - (isBetween ? 1 : 0)) * anchorStep + m_between;
    picture.hasOrder = true;
}

} // namespace corv
