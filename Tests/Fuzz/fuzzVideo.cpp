// Opens, indexes, seeks and reads a video from memory.

#include "Video/AvFrameSource.h"
#include "Video/frameConversion.h"

#include <QCoreApplication>
#include <QThreadPool>
#include <algorithm>
#include <cstdint>
#include <cstring>
#include <exception>
#include <opencv2/core.hpp>

namespace {

constexpr int framesRead = 12;

class MemoryBytes : public corv::ByteSource
{
public:
    MemoryBytes(const uint8_t* data, size_t size) : m_data(data), m_size(static_cast<qint64>(size))
    {
    }

    qint64 sizeBytes() const override { return m_size; }

    qint64 readAt(qint64 position, uchar* bytes, qint64 count) override
    {
        if (position >= m_size)
            return 0;
        const qint64 came = std::min(count, m_size - position);
        std::memcpy(bytes, m_data + position, static_cast<size_t>(came));
        return came;
    }

private:
    const uint8_t* m_data;
    qint64 m_size;
};

void readSome(corv::FrameSource& source, int count)
{
    corv::Frame frame;
    for (int i = 0; i < count; ++i) {
        if (source.read(frame) != corv::ReadOutcome::frame)
            return;
        cv::Mat picture;
        corv::toBgr(frame, picture);
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const corv::ByteSourceFactory bytes =
        [data, size](const QString&) -> corv::Result<std::unique_ptr<corv::ByteSource>> {
        return std::unique_ptr<corv::ByteSource>(std::make_unique<MemoryBytes>(data, size));
    };
    const auto source = corv::openAvFrameSource(QStringLiteral("fuzz.mp4"), bytes);
    if (source) {
        try {
            readSome(**source, framesRead);
            const int frames = (*source)->frameCount();
            for (const int part : {3, 1, 2}) {
                (*source)->seekToFrame(frames / 4 * part);
                readSome(**source, 2);
            }
            (*source)->seekToTime((*source)->durationMs());
            readSome(**source, 2);
        } catch (const std::exception&) { // of a conversion
        }
    }
    QThreadPool::globalInstance()->waitForDone(); // the bytes belong to the caller
    return 0;
}
