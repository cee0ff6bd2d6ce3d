#include "CardWorld.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <qqml.h>

namespace corv::test {
namespace {

CardWorld* g_world = nullptr;

// Videos that are files of their own are read; those that are empty count as the cards say.
DirectoryParser::Machine machineOfWorld()
{
    DirectoryParser::Machine machine = g_world->parserMachine();
    const FlightFilesMatcher::FileFacts real;
    machine.files.videoLength = [counted = machine.files.videoLength,
                                 read = real.videoLength](const QString& path) {
        return QFileInfo(path).size() == 0 ? counted(path) : read(path);
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

void CardWorld::addCopy(const QString& path, int second, const QString& video)
{
    if (!QDir().mkpath(QFileInfo(path).path()) || !QFile::copy(video, path))
        qFatal("cannot copy a video");
    seconds[QFileInfo(path).fileName()] = second;
}

CardParser::CardParser(QObject* parent) : DirectoryParser(machineOfWorld(), parent) {}

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
