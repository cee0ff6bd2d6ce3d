#include "FlightCards.h"

#include "flightLogs.h"

#include <QFile>
#include <QFileInfo>

namespace corv::test {

DirectoryParser::Machine FlightCards::parserMachine()
{
    DirectoryParser::Machine made;
    made.volumes = [this] { return machine.volumes(); };
    made.sysfsRoot = machine.sysfsRoot();
    made.hasDriveService = false;
    made.files.state = [this](const QFileInfo& file) {
        if (held) {
            reached.release();
            gate.acquire();
        }
        const QDateTime start(QDate(2018, 6, 1), QTime(12, 0));
        return QFile::exists(file.filePath()) ? start.addSecs(seconds.value(file.fileName()))
                                              : QDateTime();
    };
    made.files.videoLength = [](const QString& path) {
        return QFileInfo(path).isFile() ? VideoLength{60'000, 60'000} : VideoLength();
    };
    return made;
}

void FlightCards::addVideo(const QString& path, int second)
{
    machine.addFile(path);
    seconds[QFileInfo(path).fileName()] = second;
}

void FlightCards::addLog(const QString& path, int second, const QByteArray& flight, int durationMs)
{
    const quint32 stop = 10'000 + static_cast<quint32>(durationMs) + 1000;
    machine.addFile(path, flightLog({{10'000, stop}}, {{5000, "Line 12", flight, 7}}).bytes());
    seconds[QFileInfo(path).fileName()] = second;
}

void FlightCards::release()
{
    held = false;
    gate.release(1000);
}

} // namespace corv::test
