#include "Video/VideoBackend.h"

#include "Video/AvFrameSource.h"
#include "Video/OpenCvFrameWriter.h"

#include <utility>

namespace corv {
namespace {

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
            return Failure{Failure::Kind::notWritable,
                           QStringLiteral("The video \"%1\" cannot be written.").arg(file)};
        return std::unique_ptr<FrameWriter>(std::move(writer));
    }
};

} // namespace

std::shared_ptr<const VideoBackend> systemVideoBackend()
{
    return std::make_shared<SystemVideoBackend>();
}

} // namespace corv
