#include "Discovery/flightSearch.h"

#include <QDebug>
#include <QSet>
#include <QVariantMap>

namespace corv {
namespace {

QVariantMap matchingRow(const FlightMatchData& match)
{
    const bool found = match.matchFound;
    return {
        {QStringLiteral("videoFile"), match.videoFile.absoluteFilePath()},
        {QStringLiteral("videoFilename"), match.videoFile.baseName()},
        {QStringLiteral("logFile"),
         found ? match.logFile.absoluteFilePath() : QStringLiteral("no_match")},
        {QStringLiteral("logFilename"),
         found ? match.logFile.baseName() : QStringLiteral("No match")},
        {QStringLiteral("matchFound"), found},
        {QStringLiteral("namingDefined"), !match.naming.undefined},
        {QStringLiteral("missionName"), match.naming.missionName},
        {QStringLiteral("flightName"), match.naming.flightName},
        {QStringLiteral("flightNumber"), match.naming.flightNumber},
        {QStringLiteral("videoDuration"), match.videoDuration},
    };
}

// The files of one kind that the layouts lead to, each once and in the order of the table.
QList<QFileInfo> filesOfKind(const QList<CardLayout>& layouts, CardLayout::Kind kind,
                             const QString& directory, bool fromDrive)
{
    QList<QFileInfo> files;
    QSet<QString> listed;
    QSet<QStringList> searched;
    for (const CardLayout& layout : layouts) {
        const QStringList subPath = fromDrive ? layout.subPath : QStringList();
        const QStringList search = subPath + QStringList(layout.extension);
        if (layout.kind != kind || searched.contains(search))
            continue;
        searched.insert(search);
        const QList<QFileInfo> found = findFiles(directory, subPath, layout.extension);
        for (const QFileInfo& file : found) {
            const QString path = file.absoluteFilePath();
            if (listed.contains(path))
                continue;
            listed.insert(path);
            files.append(file);
        }
    }
    return files;
}

// A copy of a card is a folder with the card's own folders below it.
QList<QFileInfo> filesOfKindInFolder(const QList<CardLayout>& layouts, CardLayout::Kind kind,
                                     const QString& directory)
{
    const QList<QFileInfo> files = filesOfKind(layouts, kind, directory, false);
    return files.isEmpty() ? filesOfKind(layouts, kind, directory, true) : files;
}

QList<QFileInfo> gather(const QList<CardLayout>& layouts, CardLayout::Kind kind,
                        const QString& directory, bool fromDrive)
{
    return fromDrive ? filesOfKind(layouts, kind, directory, true)
                     : filesOfKindInFolder(layouts, kind, directory);
}

} // namespace

FlightFiles gatherFlightFiles(const SearchLocations& locations, const QList<CardLayout>& layouts)
{
    FlightFiles files;
    files.videos =
        gather(layouts, CardLayout::Video, locations.videoDirectory, locations.videoFromDrive);
    files.logs = gather(layouts, CardLayout::Log, locations.logDirectory, locations.logFromDrive);
    qInfo() << "Videos files list:" << files.videos;
    qInfo() << "Log files list:" << files.logs;
    return files;
}

QVariantList matchingRows(const QList<FlightMatchData>& matches)
{
    QVariantList rows;
    rows.reserve(matches.size());
    for (const FlightMatchData& match : matches)
        rows.append(matchingRow(match));
    return rows;
}

} // namespace corv
