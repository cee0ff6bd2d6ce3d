#include "Review/FrameHandOver.h"

#include "Review/Poi.h"
#include "Review/logCategory.h"
#include "Threads/post.h"
#include "Video/VideoPlayer.h"

#include <QDebug>
#include <QObject>
#include <utility>

namespace corv {

// Where thumbnails are posted to. Every request on its way keeps it alive, so that the worker never
// posts to an object that is gone; whether anybody still wants them is known on the owner's thread
// only, and asked there only.
class FrameHandOver::Inbox : public QObject
{
public:
    bool isWanted = true;
};

FrameHandOver::FrameHandOver()
    // The last holder may be the worker, which must not destroy an object of another thread.
    : m_inbox(new Inbox, [](Inbox* inbox) { inbox->deleteLater(); })
{
}

FrameHandOver::~FrameHandOver()
{
    m_inbox->isWanted = false;
}

bool FrameHandOver::request(VideoPlayer& player, QTime time, NullFrameWarning warning,
                            std::function<void(const QImage&)> store, std::function<void()> missing)
{
    return player.getFrameAsync(time, [inbox = m_inbox, time, warning, store = std::move(store),
                                       missing = std::move(missing)](const QImage& frame) {
        if (frame.isNull()) {
            if (warning == NullFrameWarning::withTime)
                qCWarning(lcReview) << "Null frame at" << time;
            else
                qCWarning(lcReview) << "Null frame";
            if (missing) {
                post(inbox.get(), [target = inbox.get(), missing]() {
                    if (target->isWanted)
                        missing();
                });
            }
            return;
        }
        // A frame of just this size would come back as it is, on memory of the worker's.
        QImage thumbnail = thumbnailOf(frame).copy();
        post(inbox.get(), [target = inbox.get(), thumbnail = std::move(thumbnail), store]() {
            if (target->isWanted)
                store(thumbnail);
        });
    });
}

} // namespace corv
