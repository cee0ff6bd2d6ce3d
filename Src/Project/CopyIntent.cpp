#include "Project/CopyIntent.h"

#include "Base/limits.h"
#include "Platform/fileSystem.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QRegularExpression>
#include <QSet>
#include <QSysInfo>

namespace corv {
namespace {

const QString suffix = QStringLiteral(".copies");
constexpr int mostBytes = 1 << 20;

QJsonObject objectIn(const QString& path, qint64 largestBytes)
{
    QFile file(path);
    if (!QFileInfo(path).isFile() || file.size() > largestBytes || !file.open(QIODevice::ReadOnly))
        return {};
    return QJsonDocument::fromJson(file.readAll()).object();
}

/// All files that projects of a folder name, whatever else is wrong with them.
QSet<QString> namedFiles(const QDir& folder)
{
    QSet<QString> named;
    for (const QString& name : folder.entryList({QStringLiteral("*.ecor")}, QDir::Files)) {
        const QJsonObject project = objectIn(folder.filePath(name), limits::projectBytes);
        for (const QJsonValue flight : project.value(QLatin1String("contents"))
                                           .toObject()
                                           .value(QLatin1String("flights"))
                                           .toArray()) {
            const QJsonObject files = flight.toObject().value(QLatin1String("files")).toObject();
            QJsonArray paths = files.value(QLatin1String("parts")).toArray();
            paths.append(files.value(QLatin1String("video")));
            paths.append(files.value(QLatin1String("log")));
            for (const QJsonValue& path : qAsConst(paths))
                named.insert(QDir::cleanPath(folder.absoluteFilePath(path.toString())));
        }
    }
    return named;
}

void removeCopies(const QDir& folder, const QJsonArray& copies)
{
    const QSet<QString> named = namedFiles(folder);
    for (const QJsonValue& value : copies) {
        const QJsonObject copy = value.toObject();
        const QString target = QDir::cleanPath(
            folder.absoluteFilePath(copy.value(QLatin1String("target")).toString()));
        const QByteArray identity = copy.value(QLatin1String("identity")).toString().toLatin1();
        // A file of the pilot's that has got this name since is another file.
        if (named.contains(target) || identity.isEmpty() ||
            platform::fileIdentity(target) != identity)
            continue;
        QFile::remove(target);
        const QString series = copy.value(QLatin1String("folder")).toString();
        if (!series.isEmpty())
            folder.rmdir(series); // only if nothing else is in it
    }
}

/// What killed programs left between having its bytes and having its name: of projects, intents and
/// copies, as such a name says.
void removeParts(const QDir& folder)
{
    static const QRegularExpression ours(
        QStringLiteral("^\\.(.+(?:\\.ecor|\\.ecor\\.\\d+\\.copies|_video|_video\\.[^.]*|_log\\.[^.]"
                       "*))\\.\\d+\\.part$"));
    for (const QString& name :
         folder.entryList({QStringLiteral(".*.part")}, QDir::Files | QDir::Dirs | QDir::Hidden)) {
        const QRegularExpressionMatch match = ours.match(name);
        if (match.hasMatch())
            platform::removeAbandonedParts(folder.filePath(match.captured(1)));
    }
}

} // namespace

CopyIntent::CopyIntent(const QString& projectPath)
    : m_path(QStringLiteral("%1/.%2.%3%4")
                 .arg(QFileInfo(projectPath).absolutePath(), QFileInfo(projectPath).fileName(),
                      QString::number(QCoreApplication::applicationPid()), suffix))
{
}

CopyIntent::~CopyIntent()
{
    if (m_isWritten)
        QFile::remove(m_path);
}

void CopyIntent::add(const QString& target, int descriptor, const QString& seriesFolder)
{
    m_copies.push_back({target, platform::fileIdentity(descriptor), seriesFolder});
}

int CopyIntent::write()
{
    if (m_copies.empty())
        return 0;
    const QDir folder = QFileInfo(m_path).absoluteDir();
    QJsonArray copies;
    for (const Copy& copy : m_copies) {
        QJsonObject entry{{QStringLiteral("target"), folder.relativeFilePath(copy.target)},
                          {QStringLiteral("identity"), QString::fromLatin1(copy.identity)}};
        if (!copy.seriesFolder.isEmpty())
            entry.insert(QStringLiteral("folder"), folder.relativeFilePath(copy.seriesFolder));
        copies.append(entry);
    }
    const QJsonObject intent{{QStringLiteral("host"), QSysInfo::machineHostName()},
                             {QStringLiteral("copies"), copies}};
    const int error =
        platform::replaceFile(m_path, QJsonDocument(intent).toJson(QJsonDocument::Compact));
    m_isWritten = error == 0;
    return error;
}

void CopyIntent::removeAbandoned(const QString& folderPath)
{
    const QDir folder(folderPath);
    removeParts(folder);
    for (const QString& name :
         folder.entryList({QStringLiteral(".*") + suffix}, QDir::Files | QDir::Hidden)) {
        const QString path = folder.filePath(name);
        const qint64 process =
            name.chopped(suffix.size()).section(QLatin1Char('.'), -1).toLongLong();
        if (!platform::isProcessGone(process))
            continue;
        const QJsonObject intent = objectIn(path, mostBytes);
        // The number of a process means nothing on another machine that shares the folder.
        if (intent.value(QLatin1String("host")).toString() != QSysInfo::machineHostName())
            continue;
        removeCopies(folder, intent.value(QLatin1String("copies")).toArray());
        QFile::remove(path);
    }
}

} // namespace corv
