#include "Video/VideoBackend.h"

#include "Video/CaptureFrameSource.h"
#include "Video/OpenCvFrameWriter.h"
#include "Video/VideoInfoReader.h"

#include <QFileInfo>
#include <utility>

namespace corv {
namespace {

Failure notOpened(const QString& file)
{
    const QFileInfo info(file);
    if (!info.exists())
        return {Failure::Kind::notFound, QStringLiteral("There is no file \"%1\".").arg(file)};
    if (!info.isFile())
        return {Failure::Kind::notAFile, QStringLiteral("\"%1\" is not a file.").arg(file)};
    if (!info.isReadable())
        return {Failure::Kind::noPermission,
                QStringLiteral("The file \"%1\" may not be read.").arg(file)};
    return {Failure::Kind::notRecognised,
            QStringLiteral("The file \"%1\" holds no video that can be read.").arg(file)};
}

class SystemVideoBackend : public VideoBackend
{
public:
    Result<std::unique_ptr<FrameSource>> openSource(const QString& file) const override
    {
        if (auto source = openCaptureFrameSource(file))
            return source;
        return notOpened(file);
    }

    Result<VideoInfo> info(const QString& file) const override
    {
        VideoInfo info;
        if (!readVideoInfo(file, info))
            return notOpened(file);
        return info;
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
