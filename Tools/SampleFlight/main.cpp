#include "SampleFlight/SampleFlight.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QDir>
#include <cstdio>
#include <limits>
#include <optional>

namespace {

using corv::SampleFlight;
using corv::SampleFlightOptions;

constexpr int failure = 1;
constexpr int wrongUsage = 2;

int complain(int status, const QString& text)
{
    std::fprintf(stderr, "vistrel-sample-flight: %s\n", qPrintable(text));
    return status;
}

void addOptions(QCommandLineParser& parser)
{
    const auto add = [&parser](const char* name, const char* text, const char* value,
                               const char* standard) {
        parser.addOption({QString::fromLatin1(name), QString::fromLatin1(text),
                          QString::fromLatin1(value), QString::fromLatin1(standard)});
    };
    add("minutes", "Length of the video (default 0.7).", "N", "0.7");
    add("thermal", "Thermal camera: 30, 35 or 0 for none (default 30).", "VERSION", "30");
    add("recordings", "Recordings in the log; the video is the last (default 1).", "N", "1");
    add("lose-parts", "Leave out every Nth part of the thermal frames.", "N", "0");
    add("spoil-packets", "Give every Nth packet a wrong checksum.", "N", "0");
    add("cut-tail", "Leave out the last bytes of the log.", "BYTES", "0");
    add("log-bytes", "Let the log run on until it is that long.", "BYTES", "0");
    add("seed", "Another park and other noise (default 1).", "N", "1");
    parser.addOption({QStringLiteral("numbers"),
                      QStringLiteral("Write its number along the top edge of each frame.")});
    parser.addOption({QStringLiteral("log-only"), QStringLiteral("Write the log alone.")});
    parser.addPositionalArgument(QStringLiteral("OUT_DIR"),
                                 QStringLiteral("Folder that becomes the card."));
    parser.addHelpOption();
    parser.addVersionOption();
}

// The options asked for; none, with a reason, if one of them makes no sense.
std::optional<SampleFlightOptions> readOptions(const QCommandLineParser& parser, QString* reason)
{
    bool allOk = true;
    const auto number = [&](const char* name, double least, double most) {
        const QString text = parser.value(QString::fromLatin1(name));
        bool ok = false;
        const double value = text.toDouble(&ok);
        if (!ok || !(value >= least && value <= most)) {
            allOk = false;
            *reason = QStringLiteral("--%1 cannot be %2").arg(QLatin1String(name), text);
            return least;
        }
        return value;
    };
    const double most = std::numeric_limits<int>::max();
    SampleFlightOptions options;
    options.videoSeconds = 60.0 * number("minutes", 0.001, 500.0);
    options.thermalCamera = static_cast<int>(number("thermal", 0, 35));
    options.recordings = static_cast<int>(number("recordings", 1, 200));
    options.losePartEvery = static_cast<int>(number("lose-parts", 0, most));
    options.spoilPacketEvery = static_cast<int>(number("spoil-packets", 0, most));
    options.cutTailBytes = static_cast<int>(number("cut-tail", 0, most));
    options.leastLogBytes = static_cast<qint64>(number("log-bytes", 0, 1e12));
    options.numberFrames = parser.isSet(QStringLiteral("numbers"));
    options.seed = static_cast<unsigned>(number("seed", 0, most));
    if (options.thermalCamera != 0 && options.thermalCamera != 30 && options.thermalCamera != 35) {
        allOk = false;
        *reason = QStringLiteral("--thermal is 30, 35 or 0");
    }
    return allOk ? std::optional(options) : std::nullopt;
}

} // namespace

/// vistrel-sample-flight OUT_DIR [options]: writes a card with a flight on it, and a project.
int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("vistrel-sample-flight"));
    QCoreApplication::setApplicationVersion(QStringLiteral(VISTREL_VERSION));
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(QCoreApplication::arguments()))
        return complain(wrongUsage, parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    if (parser.isSet(QStringLiteral("version")))
        parser.showVersion();
    if (parser.positionalArguments().size() != 1)
        return complain(wrongUsage, QStringLiteral("give the folder to write to"));
    QString reason;
    const auto options = readOptions(parser, &reason);
    if (!options)
        return complain(wrongUsage, reason);

    const QString folder = parser.positionalArguments().first();
    const SampleFlight flight(*options);
    const bool written =
        parser.isSet(QStringLiteral("log-only"))
            ? QDir().mkpath(folder) && flight.writeLog(QDir(folder).filePath(flight.logFile()))
            : flight.writeCard(folder);
    return written ? 0 : complain(failure, QStringLiteral("cannot write to %1").arg(folder));
}
