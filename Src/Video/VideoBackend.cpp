#include "Video/VideoBackend.h"

#include "Video/AvFrameSource.h"
#include "Video/OpenCvFrameWriter.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include <QFile>
#include <utility>

namespace corv {
namespace {

// Whether the suffix picks a container that takes what the encoder makes.
bool hasVideoSuffix(const QString& file)
{
    const AVOutputFormat* const format =
        av_guess_format(nullptr, QFile::encodeName(file).constData(), nullptr);
    return format && avformat_query_codec(format, AV_CODEC_ID_MPEG4, FF_COMPLIANCE_NORMAL) > 0;
}

// The encoder gives no reason.
Failure whyNoWriter(const QString& file)
{
    if (hasVideoSuffix(file))
        return {Failure::Kind::notWritable,
                QStringLiteral("The video \"%1\" cannot be written.").arg(file)};
    return {Failure::Kind::notPossible,
            QStringLiteral("The video %1 cannot be written: its name does not end in .mp4 or in "
                           "the suffix of another video format.")
                .arg(file)};
}

class SystemVideoBackend : public VideoBackend
{
public:
    Result<std::unique_ptr<FrameSource>> openSource(const QString& file) const override
    {
        return openAvFrameSource(file, openFileBytes);
    }

    Result<VideoInfo> info(const QString& file) const override
    {
        return readVideoInfo(file, openFileBytes);
    }

    Result<std::unique_ptr<FrameWriter>> openWriter(const QString& file, double fps,
                                                    QSize size) const override
    {
        auto writer = std::make_unique<OpenCvFrameWriter>();
        if (!writer->open(file, fps, size))
            return whyNoWriter(file);
        return std::unique_ptr<FrameWriter>(std::move(writer));
    }
};

} // namespace

std::shared_ptr<const VideoBackend> systemVideoBackend()
{
    return std::make_shared<SystemVideoBackend>();
}

} // namespace corv
