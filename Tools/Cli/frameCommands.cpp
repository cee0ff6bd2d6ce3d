#include "Base/videoTime.h"
#include "Cli/Command.h"
#include "Cli/instruments.h"
#include "Cli/thermalClock.h"
#include "Review/OpenFlight.h"
#include "Threads/post.h"
#include "Video/pictureFile.h"

#include <QDir>
#include <QEventLoop>
#include <QImage>
#include <algorithm>
#include <cstdio>
#include <limits>
#include <unistd.h>

namespace corv::cli {
namespace {

constexpr int standardSpacing = 10;
constexpr int msPerDay = 24 * 60 * 60 * 1000;
const QString thermalOption = QStringLiteral("thermal");
const QString timeOption = QStringLiteral("at-ms");
const QString outOption = QStringLiteral("out");
const QString prefixOption = QStringLiteral("prefix");
const QString poiOption = QStringLiteral("poi");
const QString fromOption = QStringLiteral("from-ms");
const QString toOption = QStringLiteral("to-ms");
const QString spacingOption = QStringLiteral("spacing");

// How far a long job is, in a line on standard error if that is a terminal.
class ProgressLine
{
public:
    explicit ProgressLine(const char* what) : m_what(what) {}
    ProgressLine(const ProgressLine&) = delete;
    ProgressLine& operator=(const ProgressLine&) = delete;
    ~ProgressLine()
    {
        if (m_shownPercent >= 0)
            std::fprintf(stderr, "\r%*s\r", 40, "");
    }

    void show(int done, int total)
    {
        const int percent = total > 0 ? static_cast<int>(done * 100LL / total) : m_shownPercent;
        if (!m_isOnTerminal || percent == m_shownPercent)
            return;
        m_shownPercent = percent;
        std::fprintf(stderr, "\r%s %3d %%", m_what, percent);
        std::fflush(stderr);
    }

private:
    const char* m_what;
    const bool m_isOnTerminal = isatty(STDERR_FILENO) == 1;
    int m_shownPercent = -1;
};

// Why the pictures of the flight cannot have a thermal overlay; empty if they can.
QString whyNoOverlay(OpenFlight& flight)
{
    if (!flight.logParser().log())
        return QStringLiteral("--thermal needs a log with thermal pictures");
    if (!flight.player().thermalStatus())
        return flight.player().thermalStatus().failure().sentence;
    if (!flight.logParser().isSynced())
        return QStringLiteral("no thermal pictures: the log holds no recording of the video");
    return {};
}

// Opens the one flight that the line names, if `out` is none of its files, and shows what the line
// asks for.
ExitStatus open(OpenFlight& flight, const QCommandLineParser& line, const QString& out)
{
    const QStringList arguments = line.positionalArguments();
    if (!OpenFlight::isFlight(arguments))
        return WrongUsage;
    const Status opened = flight.open(arguments, out);
    if (!opened)
        return fail(opened.failure());
    if (const Status shown = showInstruments(line, flight); !shown)
        return fail(shown.failure());
    if (!line.isSet(thermalOption))
        return Done;
    flight.player().setShowIR(true);
    const QString reason = whyNoOverlay(flight);
    return reason.isEmpty() ? Done : fail(reason);
}

// The same for commands that save pictures.
ExitStatus openForPictures(OpenFlight& flight, const QCommandLineParser& line, const QString& out)
{
    return takeThermalClock(line, flight.player()) ? open(flight, line, out) : WrongUsage;
}

QString noPictureAt(int timeMs)
{
    return QStringLiteral("no picture at %1 ms").arg(timeMs);
}

struct Picture
{
    int timeMs;
    QString file;
};

// Fetches all pictures at once, as the window does, and saves each on the thread that makes it.
ExitStatus savePictures(OpenFlight& flight, const QList<Picture>& pictures)
{
    const int total = pictures.size();
    ProgressLine progress("frames");
    QStringList failures;
    int answered = 0;
    QEventLoop loop;
    const auto answer = [&](const QString& failure) {
        if (!failure.isEmpty())
            failures << failure;
        progress.show(++answered, total);
        if (answered == total)
            loop.quit();
    };
    for (const Picture& picture : pictures) {
        const auto save = [&loop, answer, picture](const QImage& image) {
            QString failure;
            if (image.isNull())
                failure = noPictureAt(picture.timeMs);
            else if (!savePictureFile(image, picture.file))
                failure = picture.file + QStringLiteral(": cannot be written");
            post(&loop, [answer, failure] { answer(failure); });
        };
        flight.player().getExportFrameAsync(timeOfMs(picture.timeMs), save);
    }
    loop.exec();
    if (failures.isEmpty())
        return Done;
    return fail(failures.size() == 1 ? failures.first()
                                     : QStringLiteral("%1 of %2 frames failed; the first: %3")
                                           .arg(failures.size())
                                           .arg(total)
                                           .arg(failures.first()));
}

ExitStatus frame(const QCommandLineParser& line)
{
    int timeMs = 0;
    const QString out = line.value(outOption);
    if (!line.isSet(timeOption) || !readNumber(line, timeOption, 0, &timeMs) || timeMs < 0 ||
        out.isEmpty())
        return WrongUsage;
    OpenFlight flight;
    const ExitStatus status = openForPictures(flight, line, out);
    if (status != Done)
        return status;
    if (timeMs >= msPerDay) // the times of the player begin anew there
        return fail(noPictureAt(timeMs));
    return savePictures(flight, {{timeMs, out}});
}

QList<int> positionsOfPois(OpenFlight& flight)
{
    QList<int> positions;
    for (const QVariant& poi : flight.review().allPois())
        positions << poi.toMap().value(QStringLiteral("time")).toInt();
    return positions;
}

QList<int> positionsOfRange(const VideoPlayer& player, int fromMs, int toMs, int spacing)
{
    const int endMs = msOfTime(player.duration()) - 1;
    const qint64 stepMs = qint64(spacing) * player.frameDurationMs();
    QList<int> positions;
    for (qint64 ms = fromMs; ms <= std::min(toMs, endMs) && stepMs > 0; ms += stepMs)
        positions << static_cast<int>(ms);
    return positions;
}

ExitStatus frames(const QCommandLineParser& line)
{
    const QString out = line.value(outOption);
    const QString prefix = line.value(prefixOption);
    const bool ofPois = line.isSet(poiOption);
    const bool ofRange =
        line.isSet(fromOption) || line.isSet(toOption) || line.isSet(spacingOption);
    int fromMs = 0;
    int toMs = 0;
    int spacing = 0;
    if (!readNumber(line, fromOption, 0, &fromMs) ||
        !readNumber(line, toOption, std::numeric_limits<int>::max(), &toMs) ||
        !readNumber(line, spacingOption, standardSpacing, &spacing) || (ofPois && ofRange) ||
        fromMs < 0 || toMs < fromMs || spacing < 1 || out.isEmpty() || prefix.isEmpty())
        return WrongUsage;
    OpenFlight flight;
    const ExitStatus status = openForPictures(flight, line, out);
    if (status != Done)
        return status;
    if (!QDir().mkpath(out))
        return fail(out + QStringLiteral(": cannot be made"));
    const QList<int> positions =
        ofPois ? positionsOfPois(flight) : positionsOfRange(flight.player(), fromMs, toMs, spacing);
    if (positions.isEmpty())
        return fail(ofPois ? QStringLiteral("the flight has no points of interest")
                           : QStringLiteral("no frame lies in the range"));
    QList<Picture> pictures;
    for (const int timeMs : positions) {
        const QString number = QString::number(pictures.size()).rightJustified(3, QLatin1Char('0'));
        pictures.append({timeMs, QDir(out).filePath(prefix + number + QStringLiteral(".jpg"))});
    }
    return savePictures(flight, pictures);
}

ExitStatus video(const QCommandLineParser& line)
{
    const QString out = line.value(outOption);
    if (out.isEmpty())
        return WrongUsage;
    OpenFlight flight;
    const ExitStatus status = open(flight, line, out);
    if (status != Done)
        return status;
    ProgressLine progress("video");
    bool isWritten = false;
    int written = 0;
    int total = 0;
    // Both signals come from the worker's thread; queued, they arrive on this one.
    QEventLoop loop;
    QObject::connect(
        &flight.player(), &VideoPlayer::videoExportProgress, &loop,
        [&](int done, int frameCount) {
            written = done;
            total = frameCount;
            progress.show(done, frameCount);
        },
        Qt::QueuedConnection);
    QObject::connect(
        &flight.player(), &VideoPlayer::videoExportComplete, &loop,
        [&](bool result) {
            isWritten = result;
            loop.quit();
        },
        Qt::QueuedConnection);
    flight.player().exportVideo(out);
    loop.exec();
    const Status& exported = flight.player().videoExportResult();
    if (!exported)
        return fail(out + QStringLiteral(": ") + exported.failure().sentence);
    if (!isWritten)
        return fail(out + QStringLiteral(": cannot be written"));
    if (written < total)
        return fail(QStringLiteral("%1: only %2 of %3 frames could be read")
                        .arg(out)
                        .arg(written)
                        .arg(total));
    return Done;
}

} // namespace

std::vector<Command> frameCommands()
{
    const QString flight = QStringLiteral("(PROJECT | VIDEO [LOG]) [--thermal]") + instrumentsUsage;
    const QCommandLineOption thermal =
        flag(thermalOption, QStringLiteral("draws the thermal overlay in any case"));
    const auto out = [](const char* valueName, const char* description) {
        return valued(outOption, QString::fromLatin1(valueName), QString::fromLatin1(description));
    };
    const auto number = [](const QString& name, const char* description) {
        return valued(name, QStringLiteral("N"), QString::fromLatin1(description));
    };
    QCommandLineOption prefix = valued(prefixOption, QStringLiteral("P"),
                                       QStringLiteral("beginning of the file names: Frame"));
    prefix.setDefaultValue(QStringLiteral("Frame"));
    const QString pictures = flight + QStringLiteral(" [--thermal-clock file|screen]");
    return {{QStringLiteral("frame"), pictures + QStringLiteral(" --at-ms N --out IMAGE"),
             QStringLiteral("one picture, in the format of its suffix"),
             QList<QCommandLineOption>{thermal, thermalClockOption(),
                                       number(timeOption, "time in the flight, in milliseconds"),
                                       out("IMAGE", "the picture to write")} +
                 instrumentOptions(),
             frame},
            {QStringLiteral("frames"),
             pictures + QStringLiteral(" --out FOLDER [--prefix P] "
                                       "[--poi | --from-ms N --to-ms N --spacing FRAMES]"),
             QStringLiteral("a series of pictures, or one of each point of interest"),
             QList<QCommandLineOption>{
                 thermal, thermalClockOption(), out("FOLDER", "where to write the pictures"),
                 prefix, flag(poiOption, QStringLiteral("one picture of each point of interest")),
                 number(fromOption, "start of the range, in milliseconds: 0"),
                 number(toOption, "end of the range, in milliseconds: that of the flight"),
                 number(spacingOption, "a picture every N frames: 10")} +
                 instrumentOptions(),
             frames},
            {QStringLiteral("video"), flight + QStringLiteral(" --out VIDEO"),
             QStringLiteral("the whole flight as a new video"),
             QList<QCommandLineOption>{thermal, out("VIDEO", "the video to write")} +
                 instrumentOptions(),
             video}};
}

} // namespace corv::cli
