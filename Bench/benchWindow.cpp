#include "App/qmlTypes.h"
#include "Bench.h"
#include "SampleFlight/SampleFlight.h"
#include "VideoInputs.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QProcess>
#include <QQmlApplicationEngine>
#include <QQmlContext>
#include <QQmlExpression>
#include <QQuickWindow>
#include <QSettings>
#include <QTimer>
#include <algorithm>
#include <limits>
#include <opencv2/videoio.hpp>
#include <random>
#include <time.h>
#include <vector>

namespace corv::bench {
namespace {

constexpr int twoHoursS = 7200;

void startAndEnd(const QString& kind)
{
    QProcess process;
    process.start(QStringLiteral(VISTREL_BENCH_WINDOW), {kind});
    process.waitForFinished(60'000);
    if (process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        qFatal("the window did not start");
}

void coldStart(Report& report)
{
    const double ratio = timeRatio([] { startAndEnd(QStringLiteral("full")); },
                                   [] { startAndEnd(QStringLiteral("empty")); }, 15);
    report.row(QStringLiteral("cold start to first frame, full window"), ratio, 1.6,
               QStringLiteral("empty window with the same menu"));
    report.row(QStringLiteral("warm start to the first frame of the window"), ratio, 1.3,
               QStringLiteral("empty window of the same libraries"));
}

/// The longest time in which the interface thread did not come back to its events: the widest gap
/// between the ticks of a timer.
class HoldMeter
{
public:
    HoldMeter()
    {
        m_gap.start();
        QObject::connect(&m_ticks, &QTimer::timeout, [this] {
            m_longestMs = std::max(m_longestMs, static_cast<double>(m_gap.nsecsElapsed()) / 1e6);
            m_gap.restart();
        });
        m_ticks.setTimerType(Qt::PreciseTimer);
        m_ticks.start(1);
    }

    double longestMs() const { return m_longestMs; }

private:
    QTimer m_ticks;
    QElapsedTimer m_gap;
    double m_longestMs = 0;
};

/// The interface, driven by expressions in the scope of its root.
class Interface
{
public:
    Interface()
    {
        m_engine.rootContext()->setContextProperty(QStringLiteral("applicationDirPath"),
                                                   QApplication::applicationDirPath());
        m_engine.load(QUrl(QStringLiteral("qrc:/main.qml")));
        if (m_engine.rootObjects().isEmpty())
            qFatal("the interface could not be loaded");
        m_root = m_engine.rootObjects().constFirst();
    }

    QVariant evaluate(const QString& script)
    {
        return QQmlExpression(qmlContext(m_root), m_root, script).evaluate();
    }

    /// Lets the event loop run until the script is true, at most a minute.
    void waitFor(const QString& script)
    {
        QEventLoop loop;
        QTimer poll;
        QElapsedTimer patience;
        patience.start();
        QObject::connect(&poll, &QTimer::timeout, [&] {
            if (evaluate(script).toBool() || patience.elapsed() > 60'000)
                loop.quit();
        });
        poll.start(5);
        loop.exec();
        if (patience.elapsed() > 60'000)
            qFatal("never: %s", qPrintable(script));
    }

    void settle(int ms)
    {
        QEventLoop loop;
        QTimer::singleShot(ms, &loop, &QEventLoop::quit);
        loop.exec();
    }

private:
    QQmlApplicationEngine m_engine;
    QObject* m_root = nullptr;
};

QString longVideo(const QString& folder)
{
    const QString path = folder + QStringLiteral("/two-hours.mp4");
    if (QFile::exists(path))
        return path;
    const QString part = folder + QStringLiteral("/two-hours.part.mp4");
    cv::VideoWriter writer(part.toStdString(), cv::VideoWriter::fourcc('m', 'p', '4', 'v'), 1,
                           cv::Size(64, 48));
    const cv::Mat frame(48, 64, CV_8UC3, cv::Scalar(90, 120, 70));
    for (int second = 0; second < twoHoursS; ++second)
        writer.write(frame);
    writer.release();
    QFile::rename(part, path);
    return path;
}

QString longLog(const QString& folder)
{
    const QString path = folder + QStringLiteral("/two-hours.log");
    if (QFile::exists(path))
        return path;
    SampleFlightOptions options;
    options.videoSeconds = twoHoursS;
    options.thermalCamera = 0;
    const QString part = folder + QStringLiteral("/two-hours.part.log");
    if (!SampleFlight(options).writeLog(part) || !QFile::rename(part, path))
        qFatal("cannot make the log of two hours");
    return path;
}

struct Step
{
    QString name;
    QString script;
    QString done;
};

std::vector<Step> stepsOfAReview(const QString& video, const QString& log, const QString& project)
{
    return {
        {"open the video", QString("loadVideo('%1')").arg(video), "videoPlayer.duration > 0"},
        {"import the log", QString("afterFlightDataImportChoice('file://%1')").arg(log),
         "!LogParser.isParsing"},
        {"set 200 points of interest",
         "{ var pois = []; for (var i = 0; i < 200; ++i) pois.push({time: i * 30000, name: 'a', "
         "comment: ''}); timelineContent.setPOIsFromList(pois) }",
         "timelineContent.getPOIs().length >= 200"},
        {"add a point of interest", "addNewPoiAtPosition()", "true"},
        {"seek", "videoPlayer.seekAtTime(new Date(1970, 0, 1, 1, 30, 0, 0))",
         "videoPlayer.currentFrameIndex > 0"},
        {"zoom", "timelineContent.contentWidth = 2000000", "true"},
        {"show the adjustments", "tabsContainer.currentIndex = 1",
         "adjustmentsPanel() !== undefined"},
        {"show the flight data", "tabsContainer.currentIndex = 0", "true"},
        {"open the importer", "goExploreRemovableDevices()", "true"},
        {"edit the names", "editFlightProperties()", "true"},
        {"save", QString("doSaveProject('%1')").arg(project), "currentProject.fileActive"},
        {"close", "goCloseProject()", "!videoPlayer.hasVideoOpened"},
        {"open the project", QString("loadProject('%1')").arg(project),
         "LogParser.source !== '' && !LogParser.isParsing"},
        {"close again", "goCloseProject()", "!videoPlayer.hasVideoOpened"},
    };
}

void longestHold(Report& report)
{
    const QString folder = report.inputFolder();
    const QString video = longVideo(folder);
    const QString log = longLog(folder);
    const QString project = folder + QStringLiteral("/two-hours.ecor");
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, folder);
    registerQmlTypes();
    Interface ui;
    ui.settle(1500);

    // What an action holds it holds every time; what other programs add comes and goes.
    const std::vector<Step> steps = stepsOfAReview(video, log, project);
    std::vector<double> holdsMs(steps.size(), std::numeric_limits<double>::max());
    for (int round = 0; round < 3; ++round) {
        for (size_t index = 0; index < steps.size(); ++index) {
            const HoldMeter meter;
            ui.evaluate(steps[index].script);
            ui.waitFor(steps[index].done);
            ui.settle(200);
            holdsMs[index] = std::min(holdsMs[index], meter.longestMs());
        }
    }
    const auto longest = std::max_element(holdsMs.begin(), holdsMs.end());
    const double longestMs = *longest;
    const QString& slowest = steps[static_cast<size_t>(longest - holdsMs.begin())].name;
    report.row(QStringLiteral("longest hold of the interface thread / 100 ms"), longestMs / 100, 1,
               QStringLiteral("two-hour flight, longest: ") + slowest);
}

double threadSeconds()
{
    timespec time{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

/// The CPU time of each turn of this thread's event loop, which has one event or more.
class TurnMeter : public QObject
{
public:
    TurnMeter()
    {
        // Once in each turn, before its events or after them. Waiting takes no CPU time.
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                [this] {
                    const double now = threadSeconds();
                    if (m_begin > 0)
                        m_turns.push_back(now - m_begin);
                    m_begin = now;
                });
    }

    size_t count() const { return m_turns.size(); }

    double percentile999()
    {
        std::sort(m_turns.begin(), m_turns.end());
        return m_turns.at(m_turns.size() * 999 / 1000);
    }

private:
    double m_begin = 0;
    std::vector<double> m_turns;
};

/// Anything that a reviewer does, at random.
QString randomAction(std::mt19937& random)
{
    static const std::vector<QString> actions{
        "videoPlayer.step(1)",
        "videoPlayer.step(-1)",
        "timelineNavigator.jump(1000)",
        "timelineNavigator.jump(-1000)",
        "timelineNavigator.selectNextPoi()",
        "timelineNavigator.selectPreviousPoi()",
        "timelineNavigator.zoomIn()",
        "timelineNavigator.zoomIn()",
        "timelineNavigator.zoomOut()",
        "timelineNavigator.zoomToFit()",
        "timelineNavigator.zoomToSelection()",
        "timelineTab.scrollBar.scrollLeft()",
        "timelineTab.scrollBar.scrollRight()",
        "videoPlayer.togglePlayPause()",
        "addNewPoiAtPosition()",
        "deleteSelectedPoi()",
        "undo()",
        "redo()",
        "videoRect.zoomAt(1.25, 300, 200)",
        "videoRect.fit()",
        "tabsContainer.currentIndex = 1 - tabsContainer.currentIndex",
        "LogParser.manualLogTimeOffset += 100",
        "LogParser.manualLogTimeOffset = 0",
        "panelSettings.poiListShown = !panelSettings.poiListShown",
        "videoPlayer.contrast = 1.2",
        "videoPlayer.contrast = 1"};
    if (random() % 4 == 0)
        return QStringLiteral("videoPlayer.goToTime(timelineNavigator.timeAt(%1))")
            .arg(random() % 1300);
    return actions[random() % actions.size()];
}

void randomReview(Report& report)
{
    constexpr int reviewMs = 120'000;
    const QString video = cameraVideo(report, {1920, 1080}, 10, 30, 25);
    const QString log = longLog(report.inputFolder());
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, report.inputFolder());
    registerQmlTypes();
    Interface ui;
    ui.settle(500);
    ui.evaluate(QString("loadVideo('%1')").arg(video));
    ui.waitFor("videoPlayer.duration > 0");
    ui.evaluate(QString("afterFlightDataImportChoice('file://%1')").arg(log));
    ui.waitFor("!LogParser.isParsing");
    ui.evaluate(
        "{ var points = []; for (var i = 0; i < 500; ++i) points.push({time: i * 19, "
        "name: 'point ' + i, comment: 'crack'}); timelineContent.setPOIsFromList(points) }");
    ui.evaluate("panelSettings.poiListShown = true; curvesPanel.open = true;"
                "curvesPanel.curves = curvesPanel.found.slice(0, 3).map(function(one) {"
                "return one.name || one; })");
    ui.settle(3000);

    std::mt19937 random(11);
    TurnMeter turns;
    QTimer acting;
    QObject::connect(&acting, &QTimer::timeout, [&] { ui.evaluate(randomAction(random)); });
    acting.start(30);
    ui.settle(reviewMs);
    acting.stop();
    report.row(QStringLiteral("interface thread: CPU per event, 99.9th percentile / 50 ms"),
               turns.percentile999() * 1000 / 50, 1,
               QStringLiteral("2 minutes of random review, 1080p, 500 points, curves, list; "
                              "%1 turns")
                   .arg(turns.count()));
    ui.evaluate("videoPlayer.pause()");
}

const Benchmark events("window-events", randomReview);
const Benchmark start("window-start", coldStart);
const Benchmark hold("window-hold", longestHold);

} // namespace
} // namespace corv::bench
