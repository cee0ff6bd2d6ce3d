#include "Batch/FlightJob.h"

#include "Batch/FlightManifest.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QSet>
#include <algorithm>

namespace corv {
namespace {

constexpr int jobVersion = 1;
constexpr int longestNamePart = 60;
constexpr int longestFolderName = 200; // in UTF-8 still below what file systems take
const QString dateFormat = QStringLiteral("yyyy-MM-dd");

bool isForbiddenInNames(QChar character)
{
    // The characters that vfat and exFAT refuse; a leading "-" would look like an option.
    static const QString forbidden = QStringLiteral("/\\:*?\"<>|");
    return character.category() == QChar::Other_Control ||
           character.category() == QChar::Other_Format ||
           character.category() == QChar::Separator_Line ||
           character.category() == QChar::Separator_Paragraph || forbidden.contains(character);
}

bool isDroppedAtEnds(QChar character)
{
    return character.isSpace() || character == QLatin1Char('.') || character == QLatin1Char('-');
}

QString plainName(const QString& name)
{
    QString plain;
    for (const QChar character : name.normalized(QString::NormalizationForm_C))
        plain += isForbiddenInNames(character) ? QLatin1Char('_') : character;
    while (!plain.isEmpty() && isDroppedAtEnds(plain.front()))
        plain.remove(0, 1);
    while (!plain.isEmpty() && isDroppedAtEnds(plain.back()))
        plain.chop(1);
    return plain;
}

bool isPlainFolderName(const QString& name)
{
    return !name.isEmpty() && name.size() <= longestFolderName && plainName(name) == name;
}

QStringList stringsOf(const QJsonArray& array)
{
    QStringList strings;
    for (const QJsonValue& value : array)
        strings << value.toString();
    return strings;
}

Failure refused(const QString& why)
{
    return {Failure::Kind::notRecognised, QStringLiteral("The job cannot be taken: %1.").arg(why)};
}

using FoldersByFlight = QHash<QByteArray, QStringList>;

// The folders that flights have by now, by the flight; several where videos are copies of each
// other, in the order in which they were named.
FoldersByFlight foldersIn(const QString& outFolder)
{
    FoldersByFlight folders;
    if (outFolder.isEmpty())
        return folders;
    const QDir out(outFolder);
    for (const QString& name : out.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        const QByteArray identity = FlightManifest(out.filePath(name)).identity();
        if (!identity.isEmpty() && isPlainFolderName(name))
            folders[identity] << name;
    }
    for (QStringList& names : folders)
        std::sort(names.begin(), names.end(), [](const QString& a, const QString& b) {
            return a.size() != b.size() ? a.size() < b.size() : a < b;
        });
    return folders;
}

} // namespace

QStringList FlightJob::files() const
{
    return log.isEmpty() ? videos : videos + QStringList{log};
}

QJsonObject FlightJob::toJson() const
{
    QJsonObject job{{QStringLiteral("version"), jobVersion},
                    {QStringLiteral("folder"), folder},
                    {QStringLiteral("videos"), QJsonArray::fromStringList(videos)},
                    {QStringLiteral("log"), log},
                    {QStringLiteral("evidence"), evidence},
                    {QStringLiteral("doubtful"), isDoubtful},
                    {QStringLiteral("date"), date.toString(dateFormat)},
                    {QStringLiteral("namingDefined"), !naming.undefined}};
    if (!naming.undefined) {
        job.insert(QStringLiteral("missionName"), naming.missionName);
        job.insert(QStringLiteral("flightName"), naming.flightName);
        job.insert(QStringLiteral("flightNumber"), static_cast<int>(naming.flightNumber));
    }
    return job;
}

Result<FlightJob> FlightJob::fromJson(const QByteArray& text)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(text, &error);
    if (!document.isObject())
        return refused(QStringLiteral("it is no JSON object (%1)").arg(error.errorString()));
    const QJsonObject object = document.object();
    if (object.value(QLatin1String("version")).toInt() != jobVersion)
        return refused(QStringLiteral("it was written by another version of the program"));
    FlightJob job;
    job.folder = object.value(QLatin1String("folder")).toString();
    if (!isPlainFolderName(job.folder))
        return refused(QStringLiteral("\"folder\" is no plain name of a folder"));
    job.videos = stringsOf(object.value(QLatin1String("videos")).toArray());
    if (job.videos.isEmpty() || job.videos.contains(QString()))
        return refused(QStringLiteral("\"videos\" names no file"));
    job.log = object.value(QLatin1String("log")).toString();
    job.evidence = object.value(QLatin1String("evidence")).toString();
    job.isDoubtful = object.value(QLatin1String("doubtful")).toBool();
    job.date = QDate::fromString(object.value(QLatin1String("date")).toString(), dateFormat);
    job.naming.undefined = !object.value(QLatin1String("namingDefined")).toBool();
    if (!job.naming.undefined) {
        job.naming.missionName = object.value(QLatin1String("missionName")).toString();
        job.naming.flightName = object.value(QLatin1String("flightName")).toString();
        job.naming.flightNumber = object.value(QLatin1String("flightNumber")).toInt();
    }
    return job;
}

QString folderNamePart(const QString& name)
{
    QString part = plainName(name);
    if (part.size() > longestNamePart) {
        // Never half of a character that takes two code units.
        const bool splits = part.at(longestNamePart - 1).isHighSurrogate();
        part = plainName(part.left(splits ? longestNamePart - 1 : longestNamePart));
    }
    return part;
}

QString flightFolderName(const FlightJob& job)
{
    QStringList parts;
    if (job.date.isValid())
        parts << job.date.toString(dateFormat);
    if (job.naming.undefined) {
        parts << folderNamePart(QFileInfo(job.videos.value(0)).completeBaseName());
    } else {
        parts << folderNamePart(job.naming.missionName) << folderNamePart(job.naming.flightName)
              << QString::number(job.naming.flightNumber);
    }
    parts.removeAll(QString());
    return parts.isEmpty() ? QStringLiteral("flight") : parts.join(QLatin1Char('_'));
}

void nameFolders(QList<FlightJob>* jobs, const QString& outFolder)
{
    QList<FlightJob*> ordered;
    for (FlightJob& job : *jobs)
        ordered << &job;
    std::sort(ordered.begin(), ordered.end(), [](const FlightJob* a, const FlightJob* b) {
        return a->videos.value(0) < b->videos.value(0);
    });
    FoldersByFlight known = foldersIn(outFolder);
    // Compared without regard to case, as the file systems of cards do.
    QSet<QString> taken;
    for (const QStringList& folders : qAsConst(known))
        for (const QString& folder : folders)
            taken.insert(folder.toLower());
    QList<FlightJob*> unnamed;
    for (FlightJob* job : qAsConst(ordered)) {
        const auto own = known.find(identityOf(job->videos));
        if (own == known.end() || own->isEmpty())
            unnamed << job;
        else
            job->folder = own->takeFirst();
    }
    for (FlightJob* job : qAsConst(unnamed)) {
        const QString base = flightFolderName(*job);
        job->folder = base;
        for (int number = 2; taken.contains(job->folder.toLower()); ++number)
            job->folder = QStringLiteral("%1_%2").arg(base).arg(number);
        taken.insert(job->folder.toLower());
    }
}

} // namespace corv
