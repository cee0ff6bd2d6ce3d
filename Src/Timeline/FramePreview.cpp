#include "Timeline/FramePreview.h"

#include "Threads/post.h"
#include "Video/VideoPlayer.h"

#include <algorithm>
#include <utility>

namespace corv {
namespace {

// Every fourth pixel at least takes part: smooth, and still a small part of the decoding. Never on
// memory of the worker's, as a frame of just this size would be.
QImage reduced(const QImage& frame)
{
    constexpr int coarsePx = 4 * FramePreview::picturePx;
    QImage picture = frame;
    if (std::max(frame.width(), frame.height()) > coarsePx)
        picture = frame.scaled(coarsePx, coarsePx, Qt::KeepAspectRatio);
    return picture
        .scaled(FramePreview::picturePx, FramePreview::picturePx, Qt::KeepAspectRatio,
                Qt::SmoothTransformation)
        .copy();
}

} // namespace

// Where pictures are posted to. The request under way keeps it alive, so that the worker never
// posts to an object that is gone.
class FramePreview::Inbox : public QObject
{
public:
    FramePreview* owner = nullptr; ///< null once that is gone
};

FramePreview::FramePreview(QObject* parent)
    // The last holder may be the worker, which must not destroy an object of another thread.
    : QObject(parent), m_inbox(new Inbox, [](Inbox* inbox) { inbox->deleteLater(); })
{
    m_inbox->owner = this;
}

FramePreview::~FramePreview()
{
    m_inbox->owner = nullptr;
}

VideoPlayer* FramePreview::player() const
{
    return m_player;
}

void FramePreview::setPlayer(VideoPlayer* player)
{
    m_player = player;
}

void FramePreview::show(QTime time)
{
    if (!time.isValid())
        return;
    m_isWanted = true;
    if (m_isAsked)
        m_waiting = time;
    else
        ask(time);
}

void FramePreview::clear()
{
    m_isWanted = false;
    m_waiting = QTime();
    setPicture(QImage());
}

void FramePreview::ask(QTime time)
{
    if (!m_player)
        return;
    m_isAsked = m_player->getPreviewAsync(time, [inbox = m_inbox](const QImage& frame) {
        QImage picture = frame.isNull() ? QImage() : reduced(frame);
        post(inbox.get(), [target = inbox.get(), picture = std::move(picture)] {
            if (target->owner)
                target->owner->take(picture);
        });
    });
}

void FramePreview::take(const QImage& picture)
{
    m_isAsked = false;
    // The picture of another time is shown only until that of this one comes.
    if (m_isWanted && !(picture.isNull() && m_waiting.isValid()))
        setPicture(picture);
    if (m_waiting.isValid())
        ask(std::exchange(m_waiting, QTime()));
}

void FramePreview::setPicture(const QImage& picture)
{
    if (picture.isNull() && m_picture.isNull())
        return;
    m_picture = picture;
    emit pictureChanged();
}

} // namespace corv
