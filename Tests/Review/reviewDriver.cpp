// A program that reviews a flight without a pause, to be killed at any moment: it makes, edits and
// deletes points of interest, saves, and copies the flight beside new projects. After each change
// it prints how many it has made, once a kept state has to contain them.
//
//     ReviewDriver VIDEO FOLDER SEED

#include "Base/videoTime.h"
#include "Log/LogParser.h"
#include "Project/ProjectFileLoader.h"
#include "Review/Recovery.h"
#include "Review/Review.h"
#include "Video/VideoPlayer.h"

#include <QCoreApplication>
#include <QTimer>
#include <cstdio>
#include <random>

using namespace corv;

int main(int argc, char** argv)
{
    QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString&) {});
    const QString folder = arguments.value(2);
    std::mt19937 random(arguments.value(3).toUInt());

    LogParser parser;
    VideoPlayer player;
    ProjectFileLoader files;
    Review review;
    Recovery recovery;
    player.setLogParser(&parser);
    review.setVideoPlayer(&player);
    review.setLogParser(&parser);
    review.setProjectFiles(&files);
    review.pois()->setVideoPlayer(nullptr);
    recovery.setReview(&review);
    recovery.setDelay(200);
    recovery.setFolder(folder + QStringLiteral("/recovery"));

    int made = 0;
    int copies = 0;
    const auto step = [&] {
        // Each is named after its number, and only ever added: what is lost can be counted.
        review.pois()->create(timeOfMs(made));
        review.pois()->setTexts(timeOfMs(made), QString::number(made),
                                QString(200, QLatin1Char('c')));
        std::printf("%d\n", ++made);
        std::fflush(stdout);
        const auto choice = random() % 40;
        if (choice == 0)
            review.saveCopy(QStringLiteral("%1/copy%2.ecor").arg(folder).arg(++copies));
        else if (choice < 6)
            review.save(folder + QStringLiteral("/p.ecor"));
    };
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, step);
    QObject::connect(&review, &Review::opened, [&timer] { timer.start(5); });
    review.openFlight(arguments.value(1), QString());
    return QCoreApplication::exec();
}
