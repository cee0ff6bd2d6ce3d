#include "Project/ProjectFileLoader.h"

#include "Base/FileReplacement.h"

#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStorageInfo>

namespace corv {
namespace {

const QLatin1String filePrefix("file:/");

/// A path taken from a file URL keeps its leading slash.
QString withoutFilePrefix(const QString& path)
{
    return path.startsWith(filePrefix) ? path.mid(5) : path;
}

QDir folderOf(const QString& fileProjectPath)
{
    QDir folder(fileProjectPath);
    folder.cdUp();
    return folder;
}

QJsonObject projectDocument(const QString& videoPath, const QString& logPath,
                            const QVariantMap& flightProperties)
{
    const QJsonObject given = QJsonObject::fromVariantMap(flightProperties);
    const QJsonObject files{{QStringLiteral("video"), videoPath}, {QStringLiteral("log"), logPath}};
    const QJsonObject flight{
        {QStringLiteral("files"), files},
        {QStringLiteral("properties"), given.value(QLatin1String("properties")).toObject()},
        {QStringLiteral("poi"), given.value(QLatin1String("poi")).toArray()}};
    const QJsonObject contents{{QStringLiteral("flights"), QJsonArray{flight}}};
    return {{QStringLiteral("format_ver"), QStringLiteral("1.0")},
            {QStringLiteral("contents"), contents}};
}

/// The text is UTF-8, the encoding that the reader expects, also where a bare environment names no
/// encoding at all and the local one would turn letters into question marks.
void writeProject(const QString& path, const QByteArray& text)
{
    FileReplacement file(path);
    Status saved = file.open();
    if (saved) {
        file.write(text);
        saved = file.commit();
    }
    if (!saved)
        qInfo() << "Unable to save file" << file.errorString();
}

/// Everything in the file, or nothing if that is more than any project holds.
QByteArray readProject(QFile& file, const QString& path)
{
    if (file.size() <= ProjectFileLoader::largestProjectBytes)
        return file.readAll();
    qWarning() << "Project file is too large" << path;
    return {};
}

/// The first flight; an empty object where the way to it is missing or of another type.
QJsonObject firstFlight(const QByteArray& text)
{
    const QJsonObject root = QJsonDocument::fromJson(text).object();
    const QJsonObject contents = root.value(QLatin1String("contents")).toObject();
    return contents.value(QLatin1String("flights")).toArray().at(0).toObject();
}

QVariantList marksOf(const QJsonArray& poi)
{
    if (poi.size() <= ProjectFileLoader::mostMarks)
        return poi.toVariantList();
    qWarning() << "Too many POIs in file, kept" << ProjectFileLoader::mostMarks << "of"
               << poi.size();
    QVariantList marks;
    marks.reserve(ProjectFileLoader::mostMarks);
    for (int i = 0; i < ProjectFileLoader::mostMarks; ++i)
        marks.append(poi.at(i).toVariant());
    return marks;
}

QString resolvedPath(const QString& stored, const QDir& projectFolder)
{
    if (stored.startsWith(filePrefix))
        return withoutFilePrefix(stored);
    if (QFileInfo(stored).isRelative())
        return QDir::cleanPath(projectFolder.absoluteFilePath(stored));
    return stored;
}

bool isExistingFile(const QString& path)
{
    return QFileInfo::exists(path) && QFileInfo(path).isFile();
}

/// Copies `source` to `target` and returns the one of the two that the project refers to.
QString copyOrKeep(const QString& source, const QString& target, const char* completed,
                   const char* failed, bool& allCopied)
{
    if (QFile::copy(source, target)) {
        qInfo() << completed;
        return target;
    }
    qInfo() << failed;
    allCopied = false;
    return source;
}

} // namespace

bool sourceFilesFit(qint64 logBytes, qint64 videoBytes, qint64 freeBytes)
{
    return freeBytes == -1 || logBytes + videoBytes < freeBytes;
}

void ProjectFileLoader::saveProject(QString logPath, QString videoPath, QString fileProjectPath,
                                    QVariantMap flightProperties)
{
    qInfo() << "Saving this project l" << logPath << "v" << videoPath << " file "
            << fileProjectPath;
    const QDir folder = folderOf(fileProjectPath);
    const QString relativeVideo = folder.relativeFilePath(videoPath);
    const QString relativeLog = folder.relativeFilePath(logPath);
    qInfo() << "Log path:" << logPath;
    qInfo() << "Video path:" << videoPath;
    qInfo() << "Project path" << fileProjectPath;
    qInfo() << "Log relative dir:" << relativeLog;
    qInfo() << "Video relative dir:" << relativeVideo;

    const QJsonDocument document(projectDocument(relativeVideo, relativeLog, flightProperties));
    const QString path = withoutFilePrefix(fileProjectPath);
    qInfo() << "Project file path:" << path;
    writeProject(path, document.toJson(QJsonDocument::Indented));
}

QVariantMap ProjectFileLoader::loadProject(QString fileProjectPath)
{
    qInfo() << "Start loading project" << fileProjectPath;
    QVariantMap result{{QStringLiteral("loaded"), false}};
    QFile file(fileProjectPath);
    // A pipe or a device would hold the interface for as long as nobody writes to it.
    if (!isExistingFile(fileProjectPath) || !file.open(QIODevice::ReadOnly)) {
        qWarning() << "Impossible to open file";
        return result;
    }
    const QJsonObject flight = firstFlight(readProject(file, fileProjectPath));
    const QJsonObject files = flight.value(QLatin1String("files")).toObject();
    const QString storedVideo = files.value(QLatin1String("video")).toString();
    const QString storedLog = files.value(QLatin1String("log")).toString();
    const QJsonValue poi = flight.value(QLatin1String("poi"));
    qInfo() << (poi.isArray() ? "File has POIs inside" : "File has no POIs inside");
    if (storedLog.isEmpty())
        qWarning() << "Unable to find log path";
    else
        qInfo() << "Log path" << storedLog;
    if (storedVideo.isEmpty())
        qWarning() << "Unable to find video path";
    else
        qInfo() << "Video path" << storedVideo;

    const QDir folder = folderOf(fileProjectPath);
    const QString videoFile = resolvedPath(storedVideo, folder);
    const QString logFile = resolvedPath(storedLog, folder);
    result[QStringLiteral("videoFile")] = videoFile;
    result[QStringLiteral("logFile")] = logFile;
    result[QStringLiteral("videoFileExists")] = isExistingFile(videoFile);
    result[QStringLiteral("logFileExists")] = isExistingFile(logFile);
    result[QStringLiteral("loaded")] = true;
    result[QStringLiteral("properties")] =
        flight.value(QLatin1String("properties")).toObject().toVariantMap();
    if (poi.isArray())
        result[QStringLiteral("poi")] = marksOf(poi.toArray());
    return result;
}

bool ProjectFileLoader::canSourceFilesBeCopied(QString originalLogPath, QString originalVideoPath,
                                               QString fileProjectPath)
{
    const QStorageInfo volume(QFileInfo(fileProjectPath).absoluteDir());
    const qint64 logBytes = QFile(originalLogPath).size();
    const qint64 videoBytes = QFile(originalVideoPath).size();
    const qint64 freeBytes = volume.bytesAvailable();
    qInfo() << "File size (log):" << logBytes << "bytes";
    qInfo() << "File size (video):" << videoBytes << "bytes";
    qInfo() << "Remaining space on drive" << volume.displayName() << ":" << freeBytes << "bytes";
    const bool fits = sourceFilesFit(logBytes, videoBytes, freeBytes);
    if (fits)
        qInfo() << "Copy possible, enough space free or free space can't be determined but "
                   "sufficient space is expected";
    else
        qInfo() << "Not enough space to copy files";
    return fits;
}

bool ProjectFileLoader::copySourceFilesAndSaveProject(QString originalLogPath,
                                                      QString originalVideoPath,
                                                      QString fileProjectPath,
                                                      QVariantMap flightProperties)
{
    const QFileInfo project(fileProjectPath);
    const QString base = project.absolutePath() + QLatin1Char('/') + project.completeBaseName();
    const QString newLog = base + QLatin1String("_log.") + QFileInfo(originalLogPath).suffix();
    const QString newVideo =
        base + QLatin1String("_video.") + QFileInfo(originalVideoPath).suffix();
    bool allCopied = true;
    qInfo() << "Copy" << originalLogPath << "to" << newLog;
    const QString log =
        copyOrKeep(originalLogPath, newLog, "Logs copy completed", "Logs copy failed", allCopied);
    qInfo() << "Copy" << originalVideoPath << "to" << newVideo;
    const QString video = copyOrKeep(originalVideoPath, newVideo, "Video copy completed",
                                     "Video copy failed", allCopied);
    saveProject(log, video, fileProjectPath, flightProperties);
    return allCopied;
}

} // namespace corv
