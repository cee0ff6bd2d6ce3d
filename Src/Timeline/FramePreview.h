#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QTime>
#include <memory>

namespace corv {

class VideoPlayer;

/// A small picture of the video at a time that is pointed at. One request is under way at once; a
/// newer wish replaces the one that waits, so that a quick pointer leaves no queue behind. The
/// player serves playback first. Interface thread only; frames come from the player's worker.
class FramePreview : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer)
    Q_PROPERTY(QImage picture READ picture NOTIFY pictureChanged)

public:
    static constexpr int picturePx = 200; ///< the longer side

    explicit FramePreview(QObject* parent = nullptr);
    ~FramePreview() override;

    VideoPlayer* player() const;
    void setPlayer(VideoPlayer* player);

    /// The last one that arrived; null before the first, and after `clear`.
    QImage picture() const { return m_picture; }

    Q_INVOKABLE void show(QTime time);

    /// Forgets the picture and the wish that waits.
    Q_INVOKABLE void clear();

signals:
    void pictureChanged();

private:
    class Inbox;

    void ask(QTime time);
    void take(const QImage& picture);
    void setPicture(const QImage& picture);

    std::shared_ptr<Inbox> m_inbox;
    QPointer<VideoPlayer> m_player;
    QImage m_picture;
    QTime m_waiting; ///< the newest wish, invalid for none
    bool m_isAsked = false;
    bool m_isWanted = false;
};

} // namespace corv
