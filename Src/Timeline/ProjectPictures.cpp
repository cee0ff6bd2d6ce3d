#include "Timeline/ProjectPictures.h"

#include "Base/FileReplacement.h"
#include "Base/videoTime.h"
#include "Timeline/FramePreview.h"
#include "Timeline/logCategory.h"
#include "Video/VideoPlayer.h"

#include <QBuffer>
#include <QCryptographicHash>
#include <QDebug>
#include <QDir>
#include <QFileInfo>
#include <QSet>
#include <QStandardPaths>

namespace corv {
namespace {

QDir folder()
{
    return QDir(QStandardPaths::writableLocation(QStandardPaths::CacheLocation) +
                QStringLiteral("/recent"));
}

// Of any path, and unlike for every two of them.
QString nameFor(const QString& projectPath)
{
    const QByteArray hash =
        QCryptographicHash::hash(projectPath.toUtf8(), QCryptographicHash::Sha1).toHex();
    return QString::fromLatin1(hash) + QStringLiteral(".jpg");
}

// A disk that is full leaves the earlier picture, or none, and no part of one.
void write(const QImage& picture, const QString& path)
{
    QBuffer bytes;
    if (!bytes.open(QIODevice::WriteOnly) || !picture.save(&bytes, "JPG"))
        return;
    if (const Status written = replaceFile(path, bytes.data()); !written)
        qCInfo(lcTimeline) << "No picture of the project:" << written.failure().sentence;
}

} // namespace

ProjectPictures::ProjectPictures(QObject* parent) : QObject(parent) {}

ProjectPictures::~ProjectPictures() = default;

VideoPlayer* ProjectPictures::player() const
{
    return m_player;
}

void ProjectPictures::setPlayer(VideoPlayer* player)
{
    m_player = player;
}

void ProjectPictures::setProjects(const QVariantList& projects)
{
    m_projects = projects;
    QSet<QString> kept;
    for (const QVariant& project : projects)
        kept.insert(nameFor(project.toMap().value(QStringLiteral("path")).toString()));
    QDir pictures = folder();
    const QStringList names = pictures.entryList({QStringLiteral("*.jpg")}, QDir::Files);
    for (const QString& name : names) {
        if (!kept.contains(name))
            pictures.remove(name);
    }
    changed();
}

void ProjectPictures::take(const QString& projectPath, const QVariantList& pois)
{
    if (projectPath.isEmpty() || !m_player)
        return;
    const int timeMs = pois.isEmpty() ? msOfTime(m_player->duration()) / 2
                                      : pois.first().toMap().value(QStringLiteral("time")).toInt();
    // One of its own: a picture that an earlier call asked for may be of another flight.
    m_preview = std::make_unique<FramePreview>();
    m_preview->setPlayer(m_player);
    connect(m_preview.get(), &FramePreview::pictureChanged, this,
            [this, projectPath] { keep(projectPath, m_preview->picture()); });
    m_preview->show(timeOfMs(timeMs));
}

QUrl ProjectPictures::pictureOf(const QString& projectPath) const
{
    const QFileInfo file(folder().filePath(nameFor(projectPath)));
    return file.isFile() ? QUrl::fromLocalFile(file.filePath()) : QUrl();
}

void ProjectPictures::keep(const QString& projectPath, const QImage& picture)
{
    const QDir pictures = folder();
    if (pictures.mkpath(QStringLiteral(".")))
        write(picture, pictures.filePath(nameFor(projectPath)));
    changed();
}

void ProjectPictures::changed()
{
    ++m_revision;
    emit revisionChanged();
}

} // namespace corv
