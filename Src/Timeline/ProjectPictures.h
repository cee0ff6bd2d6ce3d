#pragma once

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QVariantList>
#include <memory>

namespace corv {

class FramePreview;
class VideoPlayer;

/// Small pictures of the projects that were opened last, one file each in the cache folder. A
/// picture leaves with the entry of its project. A folder that cannot be written keeps none.
/// Interface thread only.
class ProjectPictures : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer)
    Q_PROPERTY(QVariantList projects READ projects WRITE setProjects)
    Q_PROPERTY(int revision READ revision NOTIFY revisionChanged)

public:
    explicit ProjectPictures(QObject* parent = nullptr);
    ~ProjectPictures() override;

    /// Where frames are taken from. Not owned.
    VideoPlayer* player() const;
    void setPlayer(VideoPlayer* player);

    /// The projects to keep pictures of, maps with a "path". The pictures of others are deleted.
    QVariantList projects() const { return m_projects; }
    void setProjects(const QVariantList& projects);

    /// Counts the changes of the pictures.
    int revision() const { return m_revision; }

    /// Takes a frame of the open flight as the picture of its project, once it is decoded: that of
    /// the first of the points of interest, maps with a "time" in milliseconds, or of the middle of
    /// the flight. Another call before that replaces this one. Nothing for an empty path.
    Q_INVOKABLE void take(const QString& projectPath, const QVariantList& pois);

    /// The address of the picture, empty if there is none.
    Q_INVOKABLE QUrl pictureOf(const QString& projectPath) const;

signals:
    void revisionChanged();

private:
    void keep(const QString& projectPath, const QImage& picture);
    void changed();

    QPointer<VideoPlayer> m_player;
    std::unique_ptr<FramePreview> m_preview; ///< of the picture under way; null for none
    QVariantList m_projects;
    int m_revision = 0;
};

} // namespace corv
