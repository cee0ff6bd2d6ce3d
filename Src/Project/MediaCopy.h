#pragma once

#include "Platform/fileSystem.h"
#include "Threads/pool.h"

#include <QObject>
#include <QString>
#include <functional>
#include <memory>

namespace corv {

/// Copies files, one at a time, on the pool, while the caller waits in an event loop of its own.
/// Made and used on one thread.
class MediaCopy : public QObject
{
    Q_OBJECT

public:
    explicit MediaCopy(QObject* parent = nullptr);

    /// Stops a copy that runs and waits for it.
    ~MediaCopy() override;

    /// A copy that is complete but has no name yet, or the system's error number.
    struct Copy
    {
        int error = 0;
        std::unique_ptr<platform::NewFile> file;
    };

    /// Returns once the copy has ended. `target` is the name to be published under, EEXIST if it is
    /// taken; the bytes are written on the volume of `stagingFolder`, which exists.
    Copy copy(const QString& source, const QString& target, const QString& stagingFolder);

    /// The copy that runs, and each later one, ends with ECANCELED.
    void cancel() { m_control->isCancelled = true; }
    bool isCancelled() const { return m_control->isCancelled; }

    /// Bytes copied by all calls so far.
    qint64 doneBytes() const { return m_control->doneBytes; }

    /// Called by the copying thread after each piece. Before the first copy.
    void setPieceCopied(std::function<void(qint64 bytes)> pieceCopied);

signals:
    /// Ten times a second while a copy runs.
    void progressed(qint64 doneBytes);

private:
    std::shared_ptr<platform::CopyControl> m_control = std::make_shared<platform::CopyControl>();
    PoolTask m_task;
};

} // namespace corv
