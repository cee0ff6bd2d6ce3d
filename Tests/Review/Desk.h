#pragma once

#include "Base/videoTime.h"
#include "Log/LogParser.h"
#include "Project/ProjectFileLoader.h"
#include "Review/Recovery.h"
#include "Review/Review.h"
#include "Support/LogBuilder.h"
#include "Support/TestVideo.h"
#include "Support/savedProject.h"
#include "Video/VideoPlayer.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QtTest>

namespace corv::test {

constexpr int framesPerFile = 25;
constexpr int fileMs = 1000;

/// A review with its objects, as the window and the tool have it.
struct Desk
{
    explicit Desk(const QString& recoveryFolder = QString())
    {
        player.setLogParser(&parser);
        review.setVideoPlayer(&player);
        review.setLogParser(&parser);
        review.setProjectFiles(&files);
        recovery.setReview(&review);
        recovery.setFolder(recoveryFolder);
        QObject::connect(&review, &Review::problem,
                         [this](const QString&, const QString& text) { problems << text; });
        QObject::connect(&review, &Review::warning,
                         [this](const QString& title, const QString&) { warnings << title; });
    }

    bool openFlight(const QString& video, const QString& log = QString())
    {
        QSignalSpy opened(&review, &Review::opened);
        review.openFlight(video, log);
        return !opened.isEmpty() || opened.wait(20000);
    }

    bool openProject(const QString& path)
    {
        QSignalSpy opened(&review, &Review::opened);
        return review.openProject(path) && (!opened.isEmpty() || opened.wait(20000));
    }

    QStringList poiNames()
    {
        QStringList names;
        for (const Poi& poi : review.pois()->pois())
            names << poi.name;
        return names;
    }

    LogParser parser;
    VideoPlayer player;
    ProjectFileLoader files;
    Review review;
    Recovery recovery;
    QStringList problems;
    QStringList warnings;
};

/// Makes a flight of three numbered files of a second each, CORV0001.MOV and on, and its log,
/// f.log, with one point of interest. False on failure.
inline bool makeFlight(const QString& folder)
{
    for (int number = 1; number <= 3; ++number) {
        TestVideo video;
        video.frames = framesPerFile;
        video.fps = "25";
        video.size = QSize(160, 120);
        video.firstNumber = (number - 1) * framesPerFile;
        if (!video.write(QString("%1/CORV000%2.MOV").arg(folder).arg(number)))
            return false;
    }
    LogBuilder log;
    log.addGroup("mobius_start_rec", 1, {{"mobius_start_rec", "UINT32", 1}});
    log.addGroup("mobius_stop_rec", 2, {{"mobius_stop_rec", "UINT32", 1}});
    log.addGroup("point_of_interest", 3, {{"point_of_interest", "UINT32", 1}});
    log.addPacket(1, LogBuilder::u32(10000));
    log.addPacket(3, LogBuilder::u32(10690 + 1500));
    log.addPacket(2, LogBuilder::u32(10000 + 1000 + 3 * fileMs));
    return log.save(folder + "/f.log");
}

} // namespace corv::test
