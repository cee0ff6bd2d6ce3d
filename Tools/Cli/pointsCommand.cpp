#include "Cli/JobLine.h"
#include "Cli/flightExports.h"
#include "Cli/folders.h"
#include "Cli/insets.h"
#include "Cli/thermalClock.h"
#include "Log/printable.h"
#include "Timeline/poiTable.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <unistd.h>

namespace corv::cli {
namespace {

const QString jsonOption = QStringLiteral("json");
const QString outOption = QStringLiteral("out");
const QString picturesOption = QStringLiteral("pictures");

// Saves a picture of each point of interest and enters those that there are into the table.
ExitStatus addPictures(OpenFlight& flight, const QCommandLineParser& line, PoiTable* table)
{
    const QString folder = line.value(picturesOption);
    if (const Status made = makeFolder(folder); !made)
        return fail(made.failure());
    const QList<PictureFile> pictures =
        numbered(positionsOfPois(flight), folder, QStringLiteral("POI"));
    const QList<Status> results = flight.savePictures(pictures);
    const QDir base =
        line.isSet(outOption) ? QFileInfo(line.value(outOption)).absoluteDir() : QDir::current();
    for (int i = 0; i < pictures.size(); ++i)
        if (results[i])
            table->rows[i].picture =
                base.relativeFilePath(QFileInfo(pictures[i].file).absoluteFilePath());
    // The table is written in any case.
    return showResult(flight.exportResult(), flight) == Done ? Done : PartlyDone;
}

// A file gets the texts as they are, and so does another program; a terminal is not steered by
// them.
QByteArray csvFor(PoiTable table)
{
    const auto made = [](const QString& text) {
        QStringList lines = text.split(QLatin1Char('\n'));
        for (QString& one : lines)
            one = printable(one);
        return lines.join(QLatin1Char('\n'));
    };
    if (isatty(STDOUT_FILENO) == 1) {
        for (PoiTableRow& row : table.rows) {
            row.name = made(row.name);
            row.description = made(row.description);
            row.picture = made(row.picture);
        }
    }
    return poiTableCsv(table);
}

ExitStatus points(const QCommandLineParser& line)
{
    const QString out = line.value(outOption);
    for (const QString& option : {instrumentsOption, thermalOption, thermalBarOption})
        if (line.isSet(option) && !line.isSet(picturesOption))
            return wrongUsage(QStringLiteral("--%1 needs --pictures.").arg(option));
    OpenFlight flight;
    const JobLine progress(*flight.review().jobs());
    const ExitStatus opened = openForPictures(flight, line, out);
    if (opened != Done)
        return opened;
    PoiTable table =
        poiTable(flight.review().allPois(), flight.logParser(), line.isSet(imperialOption));
    ExitStatus pictures = Done;
    if (line.isSet(picturesOption))
        pictures = addPictures(flight, line, &table);
    if (pictures == Failed)
        return Failed;
    const bool asJson = line.isSet(jsonOption);
    if (out.isEmpty()) {
        const ExitStatus written = writeOut(
            asJson ? printedJson(QJsonDocument::fromJson(poiTableJson(table))) : csvFor(table));
        return written == Done ? pictures : written;
    }
    const Status written =
        writePoiTable(table, out, poiTableFormatOf(asJson ? QStringLiteral(".json") : out));
    return written ? pictures : fail(written.failure());
}

std::vector<Command> commands()
{
    return {{QStringLiteral("points"),
             QStringLiteral("(PROJECT | VIDEO [LOG]) [--json] [--imperial] [--out FILE] "
                            "[--pictures FOLDER [--thermal] [--thermal-clock file|screen] "
                            "[--instruments] [--thermal-bar]]"),
             QStringLiteral("the points of interest as a table"),
             QList<QCommandLineOption>{
                 flag(jsonOption, QStringLiteral("writes JSON, not comma-separated values")),
                 valued(outOption, QStringLiteral("FILE"),
                        QStringLiteral("the table to write; one named .json is JSON")),
                 valued(picturesOption, QStringLiteral("FOLDER"),
                        QStringLiteral("writes the picture of each, too")),
                 flag(thermalOption, QStringLiteral("draws the thermal overlay in any case")),
                 thermalClockOption()} +
                 insetOptions(),
             points}};
}

const CommandSet registered(50, commands);

} // namespace
} // namespace corv::cli
