#include "Cli/flightExports.h"

#include "Cli/insets.h"
#include "Cli/memoryLimit.h"
#include "Cli/thermalClock.h"
#include "Video/fileNames.h"

#include <QDir>

namespace corv::cli {
ExitStatus openFlight(OpenFlight& flight, const QCommandLineParser& line, const QString& out)
{
    const QStringList arguments = line.positionalArguments();
    if (!OpenFlight::isFlight(arguments))
        return WrongUsage;
    if (const Status memory = enoughMemoryForVideos(); !memory)
        return fail(memory.failure());
    const Status opened = flight.open(arguments, out);
    if (!opened)
        return fail(opened.failure());
    if (line.isSet(thermalOption)) {
        flight.player().setShowIR(true);
        const QString reason = whyNoOverlay(flight, thermalOption);
        if (!reason.isEmpty())
            return fail(reason);
    }
    const Status shown = showInsets(line, flight);
    return shown ? Done : fail(shown.failure());
}

ExitStatus openForPictures(OpenFlight& flight, const QCommandLineParser& line, const QString& out)
{
    bool asOnScreen = false;
    if (!readThermalClock(line, &asOnScreen))
        return WrongUsage;
    flight.player().setThermalAsOnScreen(asOnScreen);
    return openFlight(flight, line, out);
}

QList<int> positionsOfPois(OpenFlight& flight)
{
    QList<int> positions;
    for (const QVariant& poi : flight.review().allPois())
        positions << poi.toMap().value(QStringLiteral("time")).toInt();
    return positions;
}

QList<PictureFile> numbered(const QList<int>& positionsMs, const QString& folder,
                            const QString& prefix)
{
    QList<PictureFile> pictures;
    for (const int timeMs : positionsMs)
        pictures.append({timeMs, QDir(folder).filePath(seriesFileName(prefix, pictures.size()))});
    return pictures;
}

ExitStatus showResult(const Status& result, const OpenFlight& flight)
{
    const ExitStatus status = result ? Done : fail(result.failure());
    if (status != Failed && !flight.exportNote().isEmpty())
        fail(flight.exportNote() + QStringLiteral(" --thermal-clock screen changes that."));
    return status;
}

} // namespace corv::cli
