#include "Cli/flightPictures.h"

#include "Base/videoTime.h"
#include "Cli/insets.h"
#include "Cli/memoryLimit.h"
#include "Cli/thermalClock.h"
#include "Threads/post.h"
#include "Video/fileNames.h"
#include "Video/pictureFile.h"

#include <QDir>
#include <QEventLoop>
#include <QImage>
#include <cstdio>
#include <unistd.h>

namespace corv::cli {
ProgressLine::ProgressLine(const char* what)
    : m_what(what), m_isOnTerminal(isatty(STDERR_FILENO) == 1)
{
}

ProgressLine::~ProgressLine()
{
    if (m_shownPercent >= 0)
        std::fprintf(stderr, "\r%*s\r", 40, "");
}

void ProgressLine::show(int done, int total)
{
    const int percent = total > 0 ? static_cast<int>(done * 100LL / total) : m_shownPercent;
    if (!m_isOnTerminal || percent == m_shownPercent)
        return;
    m_shownPercent = percent;
    std::fprintf(stderr, "\r%s %3d %%", m_what, percent);
    std::fflush(stderr);
}

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
    return takeThermalClock(line, flight.player()) ? openFlight(flight, line, out) : WrongUsage;
}

QString noPictureAt(int timeMs)
{
    return QStringLiteral("no picture at %1 ms").arg(timeMs);
}

QList<int> positionsOfPois(OpenFlight& flight)
{
    QList<int> positions;
    for (const QVariant& poi : flight.review().allPois())
        positions << poi.toMap().value(QStringLiteral("time")).toInt();
    return positions;
}

QList<Picture> numbered(const QList<int>& positionsMs, const QString& folder, const QString& prefix)
{
    QList<Picture> pictures;
    for (const int timeMs : positionsMs)
        pictures.append({timeMs, QDir(folder).filePath(seriesFileName(prefix, pictures.size()))});
    return pictures;
}

QStringList savePictures(OpenFlight& flight, const QList<Picture>& pictures)
{
    const int total = pictures.size();
    ProgressLine progress("frames");
    QStringList results;
    for (int i = 0; i < total; ++i)
        results << QString();
    int answered = 0;
    QEventLoop loop;
    const auto answer = [&](int index, const QString& failure) {
        results[index] = failure;
        progress.show(++answered, total);
        if (answered == total)
            loop.quit();
    };
    for (int i = 0; i < total; ++i) {
        const auto save = [&loop, answer, i, picture = pictures[i]](const QImage& image) {
            QString failure;
            if (image.isNull())
                failure = noPictureAt(picture.timeMs);
            else if (const Status saved = savePictureFile(image, picture.file); !saved)
                failure = saved.failure().sentence;
            post(&loop, [answer, i, failure] { answer(i, failure); });
        };
        flight.player().getExportFrameAsync(timeOfMs(pictures[i].timeMs), save);
    }
    if (total > 0)
        loop.exec();
    return results;
}

QString failureOf(const QStringList& results)
{
    QStringList failures = results;
    failures.removeAll(QString());
    if (failures.size() < 2)
        return failures.value(0);
    return QStringLiteral("%1 of %2 frames failed; the first: %3")
        .arg(failures.size())
        .arg(results.size())
        .arg(failures.first());
}

} // namespace corv::cli
