#include "CardWorld.h"

#include "../Discovery/flightLogs.h"
#include "Video/VideoInfoReader.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <qqml.h>

namespace corv::test {
namespace {

CardWorld* g_world = nullptr;

DirectoryParser::Machine fakeMachine()
{
    DirectoryParser::Machine machine;
    machine.volumes = [] { return g_world->machine.volumes(); };
    machine.sysfsRoot = g_world->machine.sysfsRoot();
    machine.files.time = [](const QFileInfo& file) {
        if (g_world->held) {
            g_world->reached.release();
            g_world->gate.acquire();
        }
        const QDateTime start(QDate(2018, 6, 1), QTime(12, 0));
        return start.addSecs(g_world->seconds.value(file.fileName()));
    };
    machine.files.videoDurationMs = [](const QString& path) {
        return QFileInfo(path).size() == 0 ? 60'000 : VideoInfoReader(path).getDurationMs();
    };
    return machine;
}

} // namespace

CardWorld::CardWorld()
{
    g_world = this;
}

CardWorld::~CardWorld()
{
    if (g_world == this)
        g_world = nullptr;
}

void CardWorld::addVideo(const QString& path, int second, const QString& copyOf)
{
    if (copyOf.isEmpty())
        machine.addFile(path);
    else if (!QDir().mkpath(QFileInfo(path).path()) || !QFile::copy(copyOf, path))
        qFatal("cannot copy a video");
    seconds[QFileInfo(path).fileName()] = second;
}

void CardWorld::addLog(const QString& path, int second, const QByteArray& flight, int durationMs)
{
    const quint32 stop = 10'000 + static_cast<quint32>(durationMs) + 1000;
    machine.addFile(path, flightLog({{10'000, stop}}, {{5000, "Line 12", flight, 7}}).bytes());
    seconds[QFileInfo(path).fileName()] = second;
}

void CardWorld::release()
{
    held = false;
    gate.release(1000);
}

CardParser::CardParser(QObject* parent) : DirectoryParser(fakeMachine(), parent) {}

void CardParser::registerInPlaceOfTheReal()
{
    qmlRegisterType<CardParser>("DirectoryParser", 1, 0, "DirectoryParser");
}

void CardParser::parseDirectories(QString videoDirectory, QString logDirectory, bool videoFromDrive,
                                  bool logFromDrive, bool quickMode)
{
    g_world->lastSearch = {videoDirectory, logDirectory, videoFromDrive, logFromDrive, quickMode};
    DirectoryParser::parseDirectories(videoDirectory, logDirectory, videoFromDrive, logFromDrive,
                                      quickMode);
}

} // namespace corv::test
