#include "Project/MediaCopy.h"

#include "Threads/post.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QTimer>
#include <cerrno>
#include <utility>

namespace corv {

MediaCopy::MediaCopy(QObject* parent) : QObject(parent) {}

MediaCopy::~MediaCopy()
{
    cancel();
    m_task.waitForDone();
}

void MediaCopy::setPieceCopied(std::function<void(qint64)> pieceCopied)
{
    m_control->pieceCopied = std::move(pieceCopied);
}

MediaCopy::Copy MediaCopy::copy(const QString& source, const QString& target,
                                const QString& stagingFolder)
{
    constexpr int progressMs = 100;
    Copy copy;
    copy.error =
        ECANCELED; // until it is known otherwise: the end of the program ends the loop, too
    QEventLoop loop;
    QTimer timer;
    connect(&timer, &QTimer::timeout, this, [this] { emit progressed(doneBytes()); });
    timer.start(progressMs);
    QObject receiver;
    m_task =
        runOnPool([control = m_control, source, target, stagingFolder, &receiver, &copy, &loop] {
            auto file = std::make_shared<std::unique_ptr<platform::NewFile>>(
                std::make_unique<platform::NewFile>(target));
            int error = QFileInfo::exists(target) ? EEXIST : (*file)->open(stagingFolder);
            if (error == 0)
                error = platform::copyInto(**file, source, *control);
            post(&receiver, [error, file, &copy, &loop] {
                copy.error = error;
                if (error == 0)
                    copy.file = std::move(*file);
                loop.quit();
            });
        });
    loop.exec();
    if (copy.error == ECANCELED)
        cancel();
    m_task.waitForDone();
    emit progressed(doneBytes());
    return copy;
}

} // namespace corv
