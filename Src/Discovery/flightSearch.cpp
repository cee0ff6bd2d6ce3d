#include "Discovery/flightSearch.h"

#include "Discovery/cardLayouts.h"

#include <QDebug>
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

} // namespace

FlightFiles gatherFlightFiles(const QString& videoDirectory, const QString& logDirectory,
                              bool videoFromDrive)
{
    FlightFiles files;
    for (const CardLayout& layout : cardLayouts()) {
        if (layout.kind == CardLayout::Log)
            files.logs += findFiles(logDirectory, layout.subPath, layout.extension);
        else
            files.videos += findFiles(
                videoDirectory, videoFromDrive ? layout.subPath : QStringList(), layout.extension);
    }
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
