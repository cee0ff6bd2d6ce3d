#pragma once

#include "Video/VideoBackend.h"

#include <functional>
#include <memory>
#include <utility>

namespace corv::test {

/// A back-end whose sources come from a function, which gives null for a file that does not open.
/// Information and writers are those of the program.
class SourceBackend : public VideoBackend
{
public:
    using Open = std::function<std::unique_ptr<FrameSource>(const QString& file)>;

    explicit SourceBackend(Open open) : m_open(std::move(open)) {}

    Result<std::unique_ptr<FrameSource>> openSource(const QString& file) const override
    {
        if (auto source = m_open(file))
            return source;
        return Failure{Failure::Kind::notFound, QStringLiteral("There is no such video.")};
    }

    Result<VideoInfo> info(const QString& file) const override { return m_system->info(file); }

    Result<std::unique_ptr<FrameWriter>> openWriter(const QString& file, double fps,
                                                    QSize size) const override
    {
        return m_system->openWriter(file, fps, size);
    }

private:
    Open m_open;
    std::shared_ptr<const VideoBackend> m_system = systemVideoBackend();
};

} // namespace corv::test
