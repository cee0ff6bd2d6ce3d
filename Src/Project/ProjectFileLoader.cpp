#include "Project/ProjectFileLoader.h"

#include "Platform/fileSystem.h"
#include "Project/CopyIntent.h"
#include "Project/MediaCopy.h"
#include "Project/logCategory.h"
#include "Video/fileNames.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStorageInfo>
#include <cerrno>
#include <memory>
#include <utility>
#include <vector>

namespace corv {
namespace {

QDir folderOf(const QString& fileProjectPath)
{
    QDir folder(fileProjectPath);
    folder.cdUp();
    return folder;
}

/// The sizes of the files, by path: a moved file is recognised by its name and its size.
QJsonObject sizesOf(const QStringList& paths, const QDir& projectFolder)
{
    QJsonObject sizes;
    for (const QString& path : paths) {
        const QFileInfo file(path);
        if (!path.isEmpty() && file.isFile())
            sizes.insert(projectFolder.relativeFilePath(path), file.size());
    }
    return sizes;
}

QJsonObject projectDocument(const QJsonObject& files, const QJsonObject& sizes,
                            const QVariantMap& flightProperties)
{
    const QJsonObject given = QJsonObject::fromVariantMap(flightProperties);
    QJsonObject flight{
        {QStringLiteral("files"), files},
        {QStringLiteral("properties"), given.value(QLatin1String("properties")).toObject()},
        {QStringLiteral("poi"), given.value(QLatin1String("poi")).toArray()}};
    if (!sizes.isEmpty())
        flight.insert(QStringLiteral("sizes"), sizes);
    const QJsonObject contents{{QStringLiteral("flights"), QJsonArray{flight}}};
    return {{QStringLiteral("format_ver"), QStringLiteral("1.0")},
            {QStringLiteral("contents"), contents}};
}

/// What keeps the project from being written: `loadProject` would leave marks out, or all of it.
Status fitsAProject(const QString& path, qint64 textBytes, qint64 pois)
{
    const QString start = QStringLiteral("The project %1 could not be saved: ").arg(path);
    if (pois > ProjectFileLoader::mostPois)
        return Failure{Failure::Kind::tooLarge,
                       start + QStringLiteral("it has %1 points of interest, and a project holds "
                                              "%2. Delete some of them.")
                                   .arg(pois)
                                   .arg(ProjectFileLoader::mostPois)};
    if (textBytes > ProjectFileLoader::largestProjectBytes)
        return Failure{Failure::Kind::tooLarge,
                       start +
                           QStringLiteral("it is larger than %1 MiB. Shorten comments or delete "
                                          "points of interest.")
                               .arg(ProjectFileLoader::largestProjectBytes / limits::mib)};
    return {};
}

/// The first flight; an empty object where the way to it is missing or of another type.
QJsonObject firstFlight(const QByteArray& text)
{
    const QJsonObject root = QJsonDocument::fromJson(text).object();
    const QJsonObject contents = root.value(QLatin1String("contents")).toObject();
    return contents.value(QLatin1String("flights")).toArray().at(0).toObject();
}

/// The flight of a project; none if the file is more than any project holds.
std::optional<QJsonObject> readFlight(QFile& file, const QString& path)
{
    if (file.size() > ProjectFileLoader::largestProjectBytes) {
        qCWarning(lcProject) << "Project file is too large" << path;
        return std::nullopt;
    }
    const QJsonObject flight = firstFlight(file.readAll());
    const auto pois = flight.value(QLatin1String("poi")).toArray().size();
    if (pois > ProjectFileLoader::mostPois) {
        qCWarning(lcProject) << "Too many POIs in file:" << pois;
        return std::nullopt;
    }
    return flight;
}

QString resolvedPath(const QString& stored, const QDir& projectFolder)
{
    if (stored.startsWith(QLatin1String("file:/")))
        return withoutFilePrefix(stored);
    if (QFileInfo(stored).isRelative())
        return QDir::cleanPath(projectFolder.absoluteFilePath(stored));
    return stored;
}

QStringList resolvedParts(const QJsonArray& stored, const QDir& projectFolder)
{
    constexpr int mostParts = 10000; // as many as have numbers of four digits
    QStringList parts;
    for (int i = 0; i < stored.size() && i < mostParts; ++i) {
        const QString part = stored.at(i).toString();
        if (!part.isEmpty())
            parts << resolvedPath(part, projectFolder);
    }
    parts.removeDuplicates();
    return parts;
}

/// The files of the flight that begins with `video`; that file alone where it does not exist.
QStringList filesOf(const QString& video)
{
    const QStringList files = expandVideoSequence(video);
    return files.isEmpty() ? QStringList(video) : files;
}

qint64 bytesOf(const QStringList& files)
{
    qint64 bytes = 0;
    for (const QString& file : files)
        bytes += QFile(file).size();
    return bytes;
}

QHash<QString, qint64> resolvedSizes(const QJsonObject& stored, const QDir& projectFolder)
{
    constexpr double mostBytes = 1e15; // each whole number below is one of JSON's
    QHash<QString, qint64> sizes;
    for (auto size = stored.begin(); size != stored.end(); ++size) {
        const double bytes = size.value().toDouble(-1);
        if (bytes >= 0 && bytes < mostBytes)
            sizes.insert(resolvedPath(size.key(), projectFolder), static_cast<qint64>(bytes));
    }
    return sizes;
}

QString logTarget(const QString& base, const QString& log)
{
    return base + QLatin1String("_log.") + QFileInfo(log).suffix();
}

/// The folder of a series, or the file.
QString videoTarget(const QString& base, const QStringList& parts)
{
    return parts.size() > 1 ? base + QLatin1String("_video")
                            : base + QLatin1String("_video.") + QFileInfo(parts.first()).suffix();
}

bool isSameFile(const QString& a, const QString& b)
{
    const QString real = QFileInfo(a).canonicalFilePath();
    return !real.isEmpty() && real == QFileInfo(b).canonicalFilePath();
}

} // namespace

/// What comes of copying one file, or one series: all or nothing. The copies are made without names
/// and get them together, so that nobody ever finds a part of them.
struct ProjectFileLoader::Copied
{
    QString original;
    QStringList originalParts;
    QStringList targets;  ///< the copies, with those that were in place already
    QString seriesFolder; ///< of a series
    bool isComplete = true;

    struct Staged
    {
        QString target;
        std::unique_ptr<platform::NewFile> file;
    };
    std::vector<Staged> staged;
    QStringList published;
    bool hasMadeFolder = false;

    QString path() const { return isComplete && !targets.isEmpty() ? targets.first() : original; }
    QStringList parts() const { return isComplete ? targets : originalParts; }

    void undo()
    {
        isComplete = false;
        staged.clear();
        for (const QString& file : qAsConst(published))
            QFile::remove(file);
        published.clear();
        if (hasMadeFolder)
            QDir().rmdir(seriesFolder);
        hasMadeFolder = false;
    }
};

bool sourceFilesFit(qint64 logBytes, qint64 videoBytes, qint64 freeBytes)
{
    return freeBytes == -1 || logBytes + videoBytes < freeBytes;
}

ProjectFileLoader::ProjectFileLoader(QObject* parent) : QObject(parent) {}

ProjectFileLoader::~ProjectFileLoader() = default;

void ProjectFileLoader::setPieceCopied(std::function<void(qint64)> pieceCopied)
{
    m_pieceCopied = std::move(pieceCopied);
}

void ProjectFileLoader::setAboutToSave(std::function<Status(const QByteArray&)> aboutToSave)
{
    m_aboutToSave = std::move(aboutToSave);
}

void ProjectFileLoader::saveProject(QString logPath, QString videoPath, QString fileProjectPath,
                                    QVariantMap flightProperties)
{
    qCInfo(lcProject) << "Saving this project l" << logPath << "v" << videoPath << " file "
                      << fileProjectPath;
    const QDir folder = folderOf(fileProjectPath);
    const QString relativeVideo = folder.relativeFilePath(videoPath);
    const QString relativeLog = isNoLog(logPath) ? QString() : folder.relativeFilePath(logPath);
    qCInfo(lcProject) << "Log path:" << logPath;
    qCInfo(lcProject) << "Video path:" << videoPath;
    qCInfo(lcProject) << "Project path" << fileProjectPath;
    qCInfo(lcProject) << "Log relative dir:" << relativeLog;
    qCInfo(lcProject) << "Video relative dir:" << relativeVideo;

    QJsonObject files{{QStringLiteral("video"), relativeVideo},
                      {QStringLiteral("log"), relativeLog}};
    const QStringList parts = flightProperties.value(QStringLiteral("parts")).toStringList();
    // A single file is worth it where others follow by number that belong to another flight.
    if (parts.size() > 1 || (parts.size() == 1 && filesOf(videoPath).size() > 1)) {
        QJsonArray relativeParts;
        for (const QString& part : parts)
            relativeParts.append(folder.relativeFilePath(part));
        files.insert(QStringLiteral("parts"), relativeParts);
    }
    const QJsonObject sizes =
        sizesOf(parts + QStringList{videoPath, isNoLog(logPath) ? QString() : logPath}, folder);
    const QJsonDocument document(projectDocument(files, sizes, flightProperties));
    const QString path = withoutFilePrefix(fileProjectPath);
    qCInfo(lcProject) << "Project file path:" << path;
    // UTF-8, the encoding that the reader expects, also where a bare environment names no encoding
    // at all and the local one would turn letters into question marks.
    const QByteArray text = document.toJson(QJsonDocument::Indented);
    const auto pois = flightProperties.value(QStringLiteral("poi")).toList().size();
    m_lastSave = fitsAProject(path, text.size(), pois);
    if (!m_lastSave) {
        qCWarning(lcProject) << m_lastSave.failure().sentence;
        return;
    }
    m_lastSave = m_aboutToSave ? m_aboutToSave(text) : Status();
    if (!m_lastSave)
        return;
    const int error = platform::replaceFile(path, text);
    if (error == 0) {
        m_savedFiles = {isNoLog(logPath) ? QString() : logPath, videoPath,
                        parts.isEmpty() ? QStringList(videoPath) : parts};
        return;
    }
    qCInfo(lcProject) << "Unable to save file" << qt_error_string(error);
    m_lastSave = platform::failureOfError(
        error, QStringLiteral("The project %1 could not be saved").arg(path));
}

QVariantMap ProjectFileLoader::loadProject(QString fileProjectPath)
{
    qCInfo(lcProject) << "Start loading project" << fileProjectPath;
    const QFileInfo project(fileProjectPath);
    CopyIntent::removeAbandoned(project.absolutePath());
    platform::removeAbandonedParts(fileProjectPath);
    platform::removeAbandonedParts(project.absolutePath() + QLatin1Char('/') +
                                   project.completeBaseName() + QLatin1String("_video"));
    m_contents = {};
    m_loadProblem = fileProblem(QStringLiteral("The project"), fileProjectPath);
    QVariantMap result{{QStringLiteral("loaded"), false}};
    QFile file(fileProjectPath);
    // A pipe or a device would hold the interface for as long as nobody writes to it.
    if (!QFileInfo(fileProjectPath).isFile() || !file.open(QIODevice::ReadOnly)) {
        qCWarning(lcProject) << "Impossible to open file";
        if (!m_loadProblem)
            m_loadProblem = Failure{Failure::Kind::unreadable,
                                    QStringLiteral("The project %1 cannot be read: %2.")
                                        .arg(fileProjectPath, file.errorString())};
        return result;
    }
    const std::optional<QJsonObject> read = readFlight(file, fileProjectPath);
    const QJsonObject flight = read.value_or(QJsonObject());
    const QJsonObject files = flight.value(QLatin1String("files")).toObject();
    const QString storedVideo = files.value(QLatin1String("video")).toString();
    const QString storedLog = files.value(QLatin1String("log")).toString();
    const QJsonValue poi = flight.value(QLatin1String("poi"));
    qCInfo(lcProject) << (poi.isArray() ? "File has POIs inside" : "File has no POIs inside");
    if (storedLog.isEmpty())
        qCWarning(lcProject) << "Unable to find log path";
    else
        qCInfo(lcProject) << "Log path" << storedLog;
    if (storedVideo.isEmpty())
        qCWarning(lcProject) << "Unable to find video path";
    else
        qCInfo(lcProject) << "Video path" << storedVideo;

    const QDir folder = folderOf(fileProjectPath);
    m_contents.videoFile = resolvedPath(storedVideo, folder);
    m_contents.logFile = resolvedPath(storedLog, folder);
    m_contents.parts = resolvedParts(files.value(QLatin1String("parts")).toArray(), folder);
    m_contents.sizes = resolvedSizes(flight.value(QLatin1String("sizes")).toObject(), folder);
    m_contents.namesLog = !isNoLog(storedLog);
    m_contents.namesVideo = !storedVideo.isEmpty();
    m_contents.properties = flight.value(QLatin1String("properties")).toObject().toVariantMap();
    if (poi.isArray())
        m_contents.pois = poi.toArray().toVariantList();
    if (!m_contents.namesVideo)
        m_loadProblem =
            Failure{Failure::Kind::notRecognised,
                    read ? QStringLiteral("%1 is no project, or is damaged: it names no video.")
                               .arg(fileProjectPath)
                         : QStringLiteral("%1 is too large for a project.").arg(fileProjectPath)};
    else
        m_loadProblem = fileProblem(QStringLiteral("The video"), m_contents.videoFile);

    result[QStringLiteral("videoFile")] = m_contents.videoFile;
    result[QStringLiteral("logFile")] = m_contents.logFile;
    result[QStringLiteral("videoFileExists")] = m_contents.videoFileExists();
    result[QStringLiteral("logFileExists")] = m_contents.logFileExists();
    result[QStringLiteral("loaded")] = true;
    result[QStringLiteral("properties")] = m_contents.properties;
    if (m_contents.pois)
        result[QStringLiteral("poi")] = *m_contents.pois;
    return result;
}

bool ProjectFileLoader::canSourceFilesBeCopied(QString originalLogPath, QString originalVideoPath,
                                               QString fileProjectPath)
{
    const QStorageInfo volume(QFileInfo(fileProjectPath).absoluteDir());
    const qint64 logBytes = isNoLog(originalLogPath) ? 0 : QFile(originalLogPath).size();
    const qint64 videoBytes = bytesOf(filesOf(originalVideoPath));
    const qint64 freeBytes = volume.bytesAvailable();
    qCInfo(lcProject) << "File size (log):" << logBytes << "bytes";
    qCInfo(lcProject) << "File size (video):" << videoBytes << "bytes";
    qCInfo(lcProject) << "Remaining space on drive" << volume.displayName() << ":" << freeBytes
                      << "bytes";
    const bool fits = sourceFilesFit(logBytes, videoBytes, freeBytes);
    if (fits)
        qCInfo(lcProject)
            << "Copy possible, enough space free or free space can't be determined but "
               "sufficient space is expected";
    else
        qCInfo(lcProject) << "Not enough space to copy files";
    return fits;
}

bool ProjectFileLoader::copySourceFilesAndSaveProject(QString originalLogPath,
                                                      QString originalVideoPath,
                                                      QString fileProjectPath,
                                                      QVariantMap flightProperties)
{
    if (isCopying()) {
        qCWarning(lcProject) << "Copying already";
        return false;
    }
    const QFileInfo project(withoutFilePrefix(fileProjectPath));
    const QString base = project.absolutePath() + QLatin1Char('/') + project.completeBaseName();
    const qint64 totalBytes = QFile(originalLogPath).size() + bytesOf(filesOf(originalVideoPath));
    m_copyProblem.reset();
    emit copyProblemChanged();
    CopyIntent::removeAbandoned(project.absolutePath());
    MediaCopy copy;
    copy.setPieceCopied(m_pieceCopied);
    m_copy = &copy;
    connect(&copy, &MediaCopy::progressed, this,
            [this, totalBytes](qint64 doneBytes) { emit copyProgress(doneBytes, totalBytes); });
    emit copyingChanged(true);

    QStringList parts = flightProperties.value(QStringLiteral("parts")).toStringList();
    if (parts.isEmpty())
        parts = filesOf(originalVideoPath);
    noteWhatIsInTheWay(originalLogPath, parts, base);
    Copied log = copyLog(originalLogPath, base);
    Copied video = copyVideo(parts, base);
    if (copy.isCancelled()) {
        log.undo();
        video.undo();
    }
    CopyIntent intent(project.filePath());
    for (const Copied* copied : {&log, &video})
        for (const Copied::Staged& staged : copied->staged)
            intent.add(staged.target, staged.file->descriptor(), copied->seriesFolder);
    // Without it the copies are as good: only a kill at this moment needs it.
    intent.write();
    publish(log);
    publish(video);
    flightProperties.insert(QStringLiteral("parts"), video.parts());
    saveProject(log.path(), video.path(), fileProjectPath, flightProperties);
    if (!m_lastSave) {
        log.undo();
        video.undo();
    }
    m_copy = nullptr;
    emit copyingChanged(false);
    return log.isComplete && video.isComplete;
}

void ProjectFileLoader::cancelCopying()
{
    if (m_copy)
        m_copy->cancel();
}

// --- Copying ---------------------------------------------------------------------------------

void ProjectFileLoader::noteCopyProblem(const QString& path, int error)
{
    if (m_copyProblem)
        return;
    m_copyProblem =
        platform::failureOfError(error, QStringLiteral("%1 could not be copied").arg(path));
    emit copyProblemChanged();
}

void ProjectFileLoader::noteWhatIsInTheWay(const QString& log, const QStringList& parts,
                                           const QString& base)
{
    const auto check = [this](const QString& source, const QString& copied, const QString& target) {
        if (!QFileInfo(source).isReadable())
            noteCopyProblem(source, QFileInfo::exists(source) ? EACCES : ENOENT);
        else if (QFileInfo::exists(target) && !isSameFile(copied, target))
            noteCopyProblem(source, EEXIST);
    };
    if (!isNoLog(log))
        check(log, log, logTarget(base, log));
    for (const QString& part : parts)
        check(part, parts.size() > 1 ? QFileInfo(part).absolutePath() : part,
              videoTarget(base, parts));
}

bool ProjectFileLoader::stage(const QString& source, const QString& target, Copied& copied)
{
    qCInfo(lcProject) << "Copy" << source << "to" << target;
    copied.targets << target;
    if (isSameFile(source, target))
        return true;
    const QString folder = copied.seriesFolder.isEmpty() ? target : copied.seriesFolder;
    MediaCopy::Copy copy = m_copy->copy(source, target, QFileInfo(folder).absolutePath());
    if (copy.error != 0) {
        noteCopyProblem(source, copy.error);
        return false;
    }
    copied.staged.push_back({target, std::move(copy.file)});
    return true;
}

ProjectFileLoader::Copied ProjectFileLoader::copyLog(const QString& source, const QString& base)
{
    Copied copied;
    if (isNoLog(source))
        return copied;
    copied.original = source;
    copied.isComplete = stage(source, logTarget(base, source), copied);
    qCInfo(lcProject) << (copied.isComplete ? "Logs copy completed" : "Logs copy failed");
    return copied;
}

/// The files of a series keep their names, by which the player joins them again.
ProjectFileLoader::Copied ProjectFileLoader::copyVideo(const QStringList& parts,
                                                       const QString& base)
{
    Copied copied;
    const QString& source = parts.first();
    copied.original = source;
    copied.originalParts = parts;
    if (copied.originalParts.size() > 1) {
        copied.seriesFolder = videoTarget(base, parts);
        platform::removeAbandonedParts(copied.seriesFolder);
        // Whatever else is of this name is not ours.
        if (QFileInfo::exists(copied.seriesFolder) &&
            !isSameFile(QFileInfo(source).absolutePath(), copied.seriesFolder)) {
            noteCopyProblem(source, EEXIST);
            copied.isComplete = false;
        }
        for (const QString& part : qAsConst(copied.originalParts)) {
            copied.isComplete =
                copied.isComplete &&
                stage(part, copied.seriesFolder + QLatin1Char('/') + QFileInfo(part).fileName(),
                      copied);
        }
    } else {
        copied.isComplete = stage(source, videoTarget(base, parts), copied);
    }
    qCInfo(lcProject) << (copied.isComplete ? "Video copy completed" : "Video copy failed");
    return copied;
}

/// Gives the copies their names; a moment, since their bytes are on the disk already.
void ProjectFileLoader::publish(Copied& copied)
{
    if (!copied.isComplete) {
        copied.undo();
        return;
    }
    // Onto its own folder a series may lack a part there; else the whole folder is published at
    // once.
    const bool isNewSeries = !copied.seriesFolder.isEmpty() && !copied.staged.empty() &&
                             !QFileInfo::exists(copied.seriesFolder);
    platform::NewFolder folder(copied.seriesFolder);
    int error = isNewSeries ? folder.open() : 0;
    for (const Copied::Staged& staged : copied.staged) {
        if (isNewSeries)
            staged.file->renameTo(folder.stagingPath() + QLatin1Char('/') +
                                  QFileInfo(staged.target).fileName());
        if (error == 0)
            error = staged.file->publish(platform::NewFile::Over::nothing);
        if (error == 0)
            copied.published << staged.target;
    }
    if (error == 0 && isNewSeries)
        error = folder.publish();
    copied.hasMadeFolder = error == 0 && isNewSeries;
    if (error != 0) {
        noteCopyProblem(copied.original, error);
        copied.undo();
    }
    copied.staged.clear();
}

} // namespace corv
