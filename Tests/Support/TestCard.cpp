#include "Support/TestCard.h"

#include "SampleFlight/SampleFlight.h"
#include "Support/TestVideo.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace corv::test {
namespace {

bool setWritten(const QString& path, const QDateTime& time)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite) &&
           file.setFileTime(time, QFileDevice::FileModificationTime);
}

} // namespace

QString TestCard::videoFile(int flight)
{
    // Names of their own that do not follow one another: following ones are parts of one flight.
    return QStringLiteral("DCIM/101_CORV/CORV%1.MOV").arg(10 * flight + 1, 4, 10, QLatin1Char('0'));
}

QString TestCard::logFile(int flight)
{
    return QStringLiteral("FLIGHT%1.LOG").arg(flight, 2, 10, QLatin1Char('0'));
}

bool TestCard::write(const QString& folder) const
{
    const QDir card(folder);
    const QDateTime morning(QDate(2026, 11, 20), QTime(8, 0));
    for (int flight = 1; flight <= flights; ++flight) {
        SampleFlightOptions options;
        options.videoSeconds = shortestSeconds + flight - 1;
        options.thermalCamera = 0;
        options.seed = static_cast<unsigned>(flight);
        const SampleFlight sample(options);
        TestVideo video;
        video.frames = sample.frameCount();
        video.size = size;
        video.firstNumber = 1000 * flight;
        const QString videoPath = card.filePath(videoFile(flight));
        const QString logPath = card.filePath(logFile(flight));
        const QDateTime time = morning.addSecs(2400 * flight);
        if (!QDir().mkpath(QFileInfo(videoPath).path()) || !video.write(videoPath) ||
            !sample.writeLog(logPath) || !setWritten(videoPath, time) ||
            !setWritten(logPath, time.addSecs(20))) {
            qWarning() << "The card cannot be written to" << folder;
            return false;
        }
    }
    return true;
}

} // namespace corv::test
