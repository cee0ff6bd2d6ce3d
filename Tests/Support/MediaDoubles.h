#pragma once

#include "Video/ByteSource.h"

#include <QThread>
#include <atomic>
#include <memory>
#include <utility>

namespace corv::test {

/// A card: so many bytes a second, and a pause for each read that does not follow the one before.
class SlowBytes : public ByteSource
{
public:
    SlowBytes(std::unique_ptr<ByteSource> bytes, double bytesPerSecond, double seekMs)
        : m_bytes(std::move(bytes)), m_bytesPerSecond(bytesPerSecond), m_seekMs(seekMs)
    {
    }

    qint64 sizeBytes() const override { return m_bytes->sizeBytes(); }

    qint64 readAt(qint64 position, uchar* bytes, qint64 count) override
    {
        const qint64 came = m_bytes->readAt(position, bytes, count);
        double ms = position == m_end ? 0.0 : m_seekMs;
        if (came > 0) {
            ms += static_cast<double>(came) * 1000.0 / m_bytesPerSecond;
            m_end = position + came;
        }
        QThread::usleep(static_cast<unsigned long>(ms * 1000.0));
        return came;
    }

private:
    std::unique_ptr<ByteSource> m_bytes;
    double m_bytesPerSecond;
    double m_seekMs;
    qint64 m_end = -1;
};

/// What a test sees of a medium and does to it, shared by all that read it.
struct Medium
{
    std::atomic<qint64> bytesRead{0};
    std::atomic<qint64> lostFrom{-1}; ///< reads from here on fail; -1: none
    std::atomic<int> timesPulled{0};  ///< what was opened before the last time stays dead
    std::atomic<qint64> heldAt{-1};   ///< reads that touch this place wait; -1: none

    /// Opens files on this medium.
    static ByteSourceFactory factory(const std::shared_ptr<Medium>& medium);
};

class MediumBytes : public ByteSource
{
public:
    MediumBytes(std::unique_ptr<ByteSource> bytes, std::shared_ptr<Medium> medium)
        : m_bytes(std::move(bytes)), m_medium(std::move(medium)),
          m_pulledBefore(m_medium->timesPulled)
    {
    }

    qint64 sizeBytes() const override { return m_bytes->sizeBytes(); }

    qint64 readAt(qint64 position, uchar* bytes, qint64 count) override
    {
        if (m_medium->timesPulled != m_pulledBefore)
            return -1;
        const qint64 lostFrom = m_medium->lostFrom;
        while (m_medium->heldAt >= position && m_medium->heldAt < position + count)
            QThread::yieldCurrentThread();
        if (lostFrom >= 0 && position + count > lostFrom)
            return -1;
        const qint64 came = m_bytes->readAt(position, bytes, count);
        m_medium->bytesRead += came;
        return came;
    }

private:
    std::unique_ptr<ByteSource> m_bytes;
    std::shared_ptr<Medium> m_medium;
    int m_pulledBefore;
};

inline ByteSourceFactory Medium::factory(const std::shared_ptr<Medium>& medium)
{
    return [medium](const QString& file) -> Result<std::unique_ptr<ByteSource>> {
        Result<std::unique_ptr<ByteSource>> bytes = openFileBytes(file);
        if (!bytes)
            return bytes.failure();
        if (medium->lostFrom == 0)
            return Failure{Failure::Kind::notFound, QStringLiteral("The card is gone.")};
        return std::unique_ptr<ByteSource>(
            std::make_unique<MediumBytes>(std::move(*bytes), medium));
    };
}

} // namespace corv::test
