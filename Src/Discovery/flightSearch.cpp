#include "Discovery/flightSearch.h"

#include "Discovery/logCategory.h"
#include "Platform/Platform.h"

#include <QDebug>
#include <QDirIterator>
#include <QLocale>
#include <QSet>
#include <QVariantMap>

namespace corv {
namespace {

QString evidenceKey(PairingEvidence evidence)
{
    switch (evidence) {
    case PairingEvidence::Time:
        return QStringLiteral("time");
    case PairingEvidence::LengthDiffers:
        return QStringLiteral("lengthDiffers");
    case PairingEvidence::Length:
        return QStringLiteral("length");
    case PairingEvidence::TimeAndLength:
        return QStringLiteral("timeAndLength");
    case PairingEvidence::None:
        break;
    }
    return QStringLiteral("none");
}

QString inSeconds(qint64 ms)
{
    return QStringLiteral("%1 s").arg((ms + 500) / 1000);
}

QString partText(const FlightMatchData& match)
{
    if (match.part < 2)
        return {};
    return QStringLiteral("part %1 of %2")
        .arg(match.part)
        .arg(QFileInfo(match.flightFiles.first()).baseName());
}

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
        {QStringLiteral("evidence"), evidenceKey(match.evidence)},
        {QStringLiteral("checked"), match.checked},
        {QStringLiteral("doubtful"), match.doubtful},
        {QStringLiteral("evidenceText"), evidenceText(match)},
        {QStringLiteral("flightLengthMs"), match.flightLengthMs},
        {QStringLiteral("recordingLengthMs"), match.recordingLengthMs},
        {QStringLiteral("flightFiles"), match.flightFiles},
        {QStringLiteral("part"), match.part},
        {QStringLiteral("partText"), partText(match)},
        {QStringLiteral("partStartMs"), match.partStartMs},
        {QStringLiteral("videoTime"),
         QLocale::c().toString(match.videoTime, QStringLiteral("yyyy-MM-ddTHH:mm:ss"))},
        {QStringLiteral("videoSize"),
         match.videoBytes >= 0 ? match.videoBytes : match.videoFile.size()},
    };
}

// The files of one kind that the layouts lead to, each once and in the order of the table.
class KindSearch
{
public:
    KindSearch(const QList<CardLayout>& layouts, CardLayout::Kind kind)
        : m_layouts(layouts), m_kind(kind)
    {
    }

    // A copy of a card is a folder with the card's own folders below it.
    void look(const QString& directory, bool fromDrive)
    {
        lookIn(directory, fromDrive);
        if (files.isEmpty() && skippedNames == 0 && !fromDrive)
            lookIn(directory, true);
    }

    QList<QFileInfo> files;
    int skippedNames = 0;

private:
    void lookIn(const QString& directory, bool fromDrive)
    {
        QSet<QStringList> searched;
        for (const CardLayout& layout : m_layouts) {
            const QStringList subPath = fromDrive ? layout.subPath : QStringList();
            const QStringList search = subPath + QStringList(layout.extension);
            if (layout.kind != m_kind || searched.contains(search))
                continue;
            searched.insert(search);
            const QList<QFileInfo> found = findFiles(directory, subPath, layout.extension);
            for (const QFileInfo& file : found)
                addOnce(file);
            const QStringList folders = foldersBelow(directory, subPath);
            for (const QString& folder : folders)
                skippedNames += platform::undecodableNames(folder, {layout.extension});
        }
    }

    void addOnce(const QFileInfo& file)
    {
        const QString path = file.absoluteFilePath();
        if (m_listed.contains(path))
            return;
        m_listed.insert(path);
        files.append(file);
    }

    const QList<CardLayout>& m_layouts;
    CardLayout::Kind m_kind;
    QSet<QString> m_listed;
};

// A card goes with all its files: one of them shows it. For a while the system answers for a card
// that has gone what it remembers of it; but a folder is listed by the card itself.
bool isGone(const QString& directory, const QList<QFileInfo>& files)
{
    return !QFileInfo(directory).isReadable() || !QDirIterator(directory).hasNext() ||
           (!files.isEmpty() && !QFileInfo::exists(files.last().filePath()));
}

} // namespace

FlightFiles gatherFlightFiles(const SearchLocations& locations, const QList<CardLayout>& layouts)
{
    KindSearch videos(layouts, CardLayout::Video);
    videos.look(locations.videoDirectory, locations.videoFromDrive);
    KindSearch logs(layouts, CardLayout::Log);
    logs.look(locations.logDirectory, locations.logFromDrive);
    const FlightFiles files{videos.files, logs.files, videos.skippedNames + logs.skippedNames};
    qCInfo(lcDiscovery) << "Videos files list:" << files.videos;
    qCInfo(lcDiscovery) << "Log files list:" << files.logs;
    return files;
}

QStringList searchRemarks(const SearchLocations& locations, const FlightFiles& files,
                          const QStringList& lostFiles)
{
    QStringList remarks;
    const auto addIfGone = [&remarks](const QString& directory, const QList<QFileInfo>& listed) {
        const QString remark =
            QStringLiteral("%1 can no longer be read. If it is a card, put it in again and repeat "
                           "the search.")
                .arg(directory);
        if (!directory.isEmpty() && isGone(directory, listed) && !remarks.contains(remark))
            remarks.append(remark);
    };
    addIfGone(locations.logDirectory, files.logs);
    addIfGone(locations.videoDirectory, files.videos);
    if (remarks.isEmpty() && !lostFiles.isEmpty()) {
        const QString others = lostFiles.size() == 2 ? QStringLiteral(" and 1 more file")
                               : lostFiles.size() > 2
                                   ? QStringLiteral(" and %1 more files").arg(lostFiles.size() - 1)
                                   : QString();
        remarks.append(QStringLiteral("\"%1\"%2 could not be read. The disk or card may be damaged "
                                      "or no longer there. Check it and repeat the search.")
                           .arg(lostFiles.first(), others));
    }
    if (files.skippedNames == 1)
        remarks.append(QStringLiteral("1 file is left out: its name is not valid text (UTF-8). "
                                      "Rename it to have it listed."));
    else if (files.skippedNames > 1)
        remarks.append(QStringLiteral("%1 files are left out: their names are not valid text "
                                      "(UTF-8). Rename them to have them listed.")
                           .arg(files.skippedNames));
    return remarks;
}

QString evidenceText(const FlightMatchData& match)
{
    const QString notCertain = match.doubtful ? QStringLiteral(", but not for certain") : QString();
    switch (match.evidence) {
    case PairingEvidence::TimeAndLength:
        return QStringLiteral("Time and length agree") + notCertain;
    case PairingEvidence::Length:
        return QStringLiteral("Length agrees") + notCertain;
    case PairingEvidence::LengthDiffers:
        return (match.lacksFiles
                    ? QStringLiteral("Files of the flight seem to be missing, length differs: "
                                     "%1 against %2")
                    : QStringLiteral("Paired by time alone, length differs: %1 against %2"))
            .arg(inSeconds(match.flightLengthMs), inSeconds(match.recordingLengthMs));
    case PairingEvidence::Time:
        return QStringLiteral("Paired by time alone, lengths not compared") + notCertain;
    case PairingEvidence::None:
        break;
    }
    return QStringLiteral("No log found");
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
