#include "SampleFlight/SampleFlight.h"

#include "Log/LogDecoder.h"
#include "SampleFlight/frameStrip.h"
#include "Support/ProgramRun.h"
#include "Video/ThermalOverlay.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <opencv2/imgproc.hpp>
#include <opencv2/videoio.hpp>

using namespace corv;
using namespace corv::test;

Q_DECLARE_METATYPE(corv::SampleFlightOptions)

namespace {

QByteArray contentsOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// A flight of ten seconds, with one pass over the hot cell.
SampleFlightOptions shortFlight()
{
    SampleFlightOptions options;
    options.videoSeconds = 10.0;
    return options;
}

struct DecodedFlight
{
    explicit DecodedFlight(const SampleFlightOptions& options) : flight(options)
    {
        const QString path = folder.filePath(QStringLiteral("flight.log"));
        if (flight.writeLog(path))
            log.reset(decoder.parseLog(path, [](int, int, int) {}));
    }

    std::vector<quint32> times(const char* group, const char* var) const
    {
        std::vector<quint32> result;
        LogVar* values = log->getGroup(std::string(group))->getVar(var);
        for (int row = 0; row < values->getNbPackets(); ++row) {
            quint32 value = 0;
            values->getU32(0, row, &value);
            result.push_back(value);
        }
        return result;
    }

    QTemporaryDir folder;
    SampleFlight flight;
    std::atomic<bool> abort{false};
    LogDecoder decoder{&abort};
    std::shared_ptr<LogFile> log;
};

float floatAt(LogFile& log, const char* group, const char* var, int column, int row)
{
    void* values = nullptr;
    log.getGroup(std::string(group))->getVar(var)->getColumn(column, &values);
    return static_cast<const float*>(values)[row];
}

// The middle of what the overlay shows in its hottest colours, dark red and red.
cv::Point2d hotSpot(const cv::Mat& frame)
{
    cv::Mat hot;
    cv::inRange(frame(SampleFlight::thermalPlace()), cv::Scalar(0, 0, 120), cv::Scalar(8, 70, 255),
                hot);
    const cv::Moments moments = cv::moments(hot, true);
    if (moments.m00 == 0.0)
        return {-1.0, -1.0};
    const cv::Point corner = SampleFlight::thermalPlace().tl();
    return {corner.x + moments.m10 / moments.m00, corner.y + moments.m01 / moments.m00};
}

double distance(cv::Point2d a, cv::Point2d b)
{
    return cv::norm(a - b);
}

} // namespace

class SampleFlightTest : public QObject
{
    Q_OBJECT

private slots:
    void equalOptionsMakeEqualLogs();
    void logIsWhole_data();
    void logIsWhole();
    void damageIsAsAsked();
    void statesAreTheTruth();
    void thermalValuesLieInTheRangeOfTheCamera_data();
    void thermalValuesLieInTheRangeOfTheCamera();
    void framesAreNumberedUnlessPlain();
    void hotCellIsInThePicture();
    void overlayCoversTheHotCell_data();
    void overlayCoversTheHotCell();
    void logsReachTheWantedSize();
    void aCardHasTheLayoutOfTheDrone();
    void theProgramWritesWhatTheLineNames_data();
    void theProgramWritesWhatTheLineNames();
};

void SampleFlightTest::equalOptionsMakeEqualLogs()
{
    QTemporaryDir folder;
    SampleFlightOptions options = shortFlight();
    options.videoSeconds = 2.0;
    const auto write = [&folder](const SampleFlightOptions& flight, const char* name) {
        const QString path = folder.filePath(QString::fromLatin1(name));
        return SampleFlight(flight).writeLog(path) ? contentsOf(path) : QByteArray();
    };
    const QByteArray first = write(options, "a.log");
    QVERIFY(first.size() > 1'000'000);
    QVERIFY(first == write(options, "b.log"));
    options.seed = 2;
    QVERIFY(first != write(options, "c.log"));
}

void SampleFlightTest::logIsWhole_data()
{
    QTest::addColumn<int>("recordings");
    QTest::addColumn<int>("thermalCamera");
    QTest::newRow("one recording") << 1 << 30;
    QTest::newRow("the third of three") << 3 << 35;
    QTest::newRow("no thermal camera") << 2 << 0;
}

void SampleFlightTest::logIsWhole()
{
    QFETCH(int, recordings);
    QFETCH(int, thermalCamera);
    SampleFlightOptions options = shortFlight();
    options.recordings = recordings;
    options.thermalCamera = thermalCamera;
    DecodedFlight decoded(options);
    QVERIFY(decoded.log);
    const LogDecodeCounters counters = decoded.decoder.counters();
    QCOMPARE(counters.valid, counters.total);
    QCOMPARE(counters.wrongId + counters.wrongCrc + counters.wrongSize, qint64(0));
    QVERIFY(!counters.incompleteLast);

    const LogFile* log = decoded.log.get();
    const auto events = LogDecoder::readRecordingEvents(log);
    QCOMPARE(static_cast<int>(events.size()), recordings);
    const int videoMs = decoded.flight.videoDurationMs();
    const LogSyncResult sync = decoded.decoder.syncLogToVideo(log, videoMs);
    QVERIFY(sync.found);
    QVERIFY(!sync.probablyNotMatching);
    QCOMPARE(sync.logTimeOffset, decoded.flight.logTimeOffset());
    QCOMPARE(sync.logTimeOffset - static_cast<int>(events.back().startTime),
             recordings == 1 ? 690 : 1279);

    const auto namings = decoded.decoder.readFlightNamingEvents(log);
    QCOMPARE(namings.first().missionName, QStringLiteral("Pre-flight check"));
    const FlightNamingEvent naming = decoded.decoder.findNamingForFlight(
        namings, sync.logTimeOffset, sync.logTimeOffset + videoMs);
    QCOMPARE(naming.missionName, SampleFlight::missionName());
    QCOMPARE(naming.flightName, SampleFlight::flightName());
    QCOMPARE(naming.flightNumber, decoded.flight.flightNumber());
    QCOMPARE(decoded.decoder.findThermalCameraHwVersion(log),
             thermalCamera == 0 ? -1 : thermalCamera);

    std::vector<quint32> pois;
    for (const int poiMs : decoded.flight.poisMs())
        pois.push_back(static_cast<quint32>(poiMs + sync.logTimeOffset));
    QVERIFY(decoded.times("point_of_interest", "point_of_interest") == pois);
    QCOMPARE(pois.size(), size_t(1));
}

void SampleFlightTest::damageIsAsAsked()
{
    const DecodedFlight whole(shortFlight());
    SampleFlightOptions options = shortFlight();
    options.losePartEvery = 10;
    const DecodedFlight lossy(options);
    const qint64 parts = whole.log->getGroup("lepton_video")->getNbPackets();
    QCOMPARE(qint64(lossy.log->getGroup("lepton_video")->getNbPackets()), parts - parts / 10);

    options = shortFlight();
    options.spoilPacketEvery = 7;
    options.cutTailBytes = 5;
    const DecodedFlight spoilt(options);
    const qint64 packets = whole.decoder.counters().total;
    QCOMPARE(spoilt.decoder.counters().total, packets);
    QCOMPARE(spoilt.decoder.counters().wrongCrc, packets / 7);
    QVERIFY(spoilt.decoder.counters().incompleteLast);
}

void SampleFlightTest::statesAreTheTruth()
{
    const DecodedFlight decoded(shortFlight());
    const std::vector<quint32> times = decoded.times("state_estimation", "time");
    double highest = 0.0;
    for (int row = 0; row < static_cast<int>(times.size()); row += 37) {
        const quint32 timeMs = times[static_cast<size_t>(row)];
        // A record holds until the next one.
        const SampleFlight::State state = decoded.flight.stateAt(timeMs + 19);
        const auto logged = [&](const char* var, int column = 0) {
            return floatAt(*decoded.log, "state_estimation", var, column, row);
        };
        QCOMPARE(state.roll, logged("euler_angles", 0));
        QCOMPARE(state.pitch, logged("euler_angles", 1));
        QCOMPARE(state.yaw, logged("euler_angles", 2));
        QCOMPARE(state.headingReference, logged("heading_reference"));
        QCOMPARE(state.altitude, logged("altitude"));
        QCOMPARE(state.altitudeReference, logged("altitude_telem_ref"));
        highest = std::max(highest, double(state.altitude) - double(state.altitudeReference));
        QVERIFY(std::abs(state.roll) < 0.2F);
    }
    QVERIFY(highest > 20.0 && highest < 24.0);
    const std::vector<quint32> commands = decoded.times("camera_cmd", "time");
    for (int row = 0; row < static_cast<int>(commands.size()); row += 13)
        QCOMPARE(decoded.flight.stateAt(commands[static_cast<size_t>(row)] + 99).cameraPitch,
                 floatAt(*decoded.log, "camera_cmd", "servo_angle", 0, row));
}

void SampleFlightTest::thermalValuesLieInTheRangeOfTheCamera_data()
{
    QTest::addColumn<int>("camera");
    QTest::addColumn<double>("least");
    QTest::addColumn<double>("most");
    QTest::newRow("version 30") << 30 << 7000.0 << 9500.0;
    QTest::newRow("version 35") << 35 << 16383.0 << 40000.0;
}

void SampleFlightTest::thermalValuesLieInTheRangeOfTheCamera()
{
    QFETCH(int, camera);
    QFETCH(double, least);
    QFETCH(double, most);
    SampleFlightOptions options = shortFlight();
    options.thermalCamera = camera;
    const SampleFlight flight(options);
    double hottest = 0.0;
    for (quint32 frame = SampleFlight::firstThermalFrame; frame < 350; frame += 3) {
        double min = 0.0;
        double max = 0.0;
        cv::minMaxLoc(flight.thermalFrame(frame), &min, &max);
        QVERIFY(min > least && max < most);
        hottest = std::max(hottest, max);
    }
    QVERIFY(hottest > flight.rawValue(75.0));
}

void SampleFlightTest::framesAreNumberedUnlessPlain()
{
    SampleFlightOptions options = shortFlight();
    QCOMPARE(readFrameNumber(SampleFlight(options).videoFrame(3)), 3);
    options.numberFrames = false;
    QCOMPARE(readFrameNumber(SampleFlight(options).videoFrame(3)), -1);
}

void SampleFlightTest::hotCellIsInThePicture()
{
    const SampleFlight flight(shortFlight());
    const cv::Mat frame = flight.videoFrame(7 * SampleFlight::frameRate);
    QCOMPARE(readFrameNumber(frame), 7 * SampleFlight::frameRate);
    const cv::Point2d cell = flight.hotCellInFrame(7000.0);
    const auto at = [&frame](cv::Point2d point) {
        const cv::Rect around(cvRound(point.x) - 2, cvRound(point.y) - 2, 5, 5);
        return cv::mean(frame(around));
    };
    // Scorched: redder than blue, on panels that are blue.
    QVERIFY(at(cell)[2] > at(cell)[0]);
    QVERIFY(at(cell + cv::Point2d(45.0, 0.0))[0] > 1.3 * at(cell + cv::Point2d(45.0, 0.0))[2]);
}

void SampleFlightTest::overlayCoversTheHotCell_data()
{
    QTest::addColumn<SampleFlightOptions>("options");
    SampleFlightOptions options = shortFlight();
    QTest::newRow("version 30") << options;
    options.thermalCamera = 35;
    options.recordings = 2;
    QTest::newRow("version 35, second recording") << options;
    options.spoilPacketEvery = 1000;
    options.cutTailBytes = 3000;
    QTest::newRow("damaged") << options;
}

void SampleFlightTest::overlayCoversTheHotCell()
{
    QFETCH(SampleFlightOptions, options);
    const DecodedFlight decoded(options);
    const auto clock = std::make_shared<FlightClock>();
    clock->logTimeOffset =
        decoded.decoder.syncLogToVideo(decoded.log.get(), decoded.flight.videoDurationMs())
            .logTimeOffset;
    clock->synced = true;
    ThermalOverlay overlay;
    overlay.setClock(clock);
    overlay.updateLogData(true, decoded.log);
    VideoDisplaySettings settings;
    settings.irMappingMinValue = decoded.flight.rawValue(15.0);
    settings.irMappingMaxValue = decoded.flight.rawValue(75.0);

    const double cellSize = 13.0; // pixels
    int compared = 0;
    for (const int index : {195, 203, 210, 214, 221}) {
        const int timeMs = index * 1000 / SampleFlight::frameRate;
        for (const int manualMs : {0, 500, -500}) {
            clock->manualLogTimeOffset = manualMs;
            cv::Mat frame = decoded.flight.videoFrame(index);
            overlay.drawThermalOverlay(frame, timeMs, settings, false);
            const cv::Point2d spot = hotSpot(frame);
            const cv::Point2d cell = decoded.flight.hotCellInFrame(timeMs);
            const cv::Point2d shown = decoded.flight.hotCellInFrame(timeMs + manualMs);
            if (!SampleFlight::thermalPlace().contains(shown))
                continue;
            ++compared;
            QVERIFY(distance(spot, shown) < 1.5 * cellSize);
            if (manualMs != 0)
                QVERIFY(distance(spot, cell) > 6.0 * cellSize);
        }
    }
    QVERIFY(compared > 12);
}

void SampleFlightTest::logsReachTheWantedSize()
{
    SampleFlightOptions options = shortFlight();
    options.leastLogBytes = 20'000'000;
    const DecodedFlight decoded(options);
    const qint64 size = QFileInfo(decoded.folder.filePath(QStringLiteral("flight.log"))).size();
    QVERIFY(size >= 20'000'000);
    QVERIFY(size < 20'100'000);
    QCOMPARE(decoded.decoder.counters().valid, decoded.decoder.counters().total);
}

void SampleFlightTest::aCardHasTheLayoutOfTheDrone()
{
    QTemporaryDir folder;
    SampleFlightOptions options;
    options.videoSeconds = 1.5;
    options.secondsPerFile = 1;
    const SampleFlight flight(options);
    QVERIFY(flight.writeCard(folder.path()));
    QCOMPARE(flight.videoFiles(), (QStringList{QStringLiteral("DCIM/101_CORV/CORV0001.MOV"),
                                               QStringLiteral("DCIM/101_CORV/CORV0002.MOV")}));
    int number = 0;
    for (const QString& file : flight.videoFiles()) {
        cv::VideoCapture video(folder.filePath(file).toStdString(), cv::CAP_FFMPEG);
        QCOMPARE(video.get(cv::CAP_PROP_FPS), 30.0);
        for (cv::Mat frame; video.read(frame); ++number) {
            QCOMPARE(frame.size().width, 1280);
            QCOMPARE(readFrameNumber(frame), number);
        }
    }
    QCOMPARE(number, 45);
    const QFileInfo log(folder.filePath(SampleFlight::logFile()));
    // Whatever the writing took: as long before the log's end as the drone ended them.
    QList<qint64> msBeforeLog;
    for (const QString& file : flight.videoFiles())
        msBeforeLog << QFileInfo(folder.filePath(file)).lastModified().msecsTo(log.lastModified());
    QCOMPARE(msBeforeLog, (QList<qint64>{14'500, 14'000}));

    const QJsonObject project =
        QJsonDocument::fromJson(contentsOf(folder.filePath(SampleFlight::projectFile()))).object();
    const QJsonObject first =
        project[QStringLiteral("contents")][QStringLiteral("flights")][0].toObject();
    const QJsonValue files = first[QStringLiteral("files")];
    QVERIFY(QFileInfo::exists(folder.filePath(files[QStringLiteral("video")].toString())));
    QVERIFY(QFileInfo::exists(folder.filePath(files[QStringLiteral("log")].toString())));
    const QJsonValue properties = first[QStringLiteral("properties")];
    const QJsonValue thermal = properties[QStringLiteral("thermal_video")];
    QVERIFY(thermal[QStringLiteral("visible")].toBool());
    QVERIFY(thermal[QStringLiteral("translucent")].toBool());
    QCOMPARE(properties[QStringLiteral("designation")][QStringLiteral("mission_name")].toString(),
             SampleFlight::missionName());
    QCOMPARE(first[QStringLiteral("poi")].toArray().size(), int(flight.poisMs().size()));
    QVERIFY(!SampleFlight(options).writeCard(folder.filePath(SampleFlight::logFile())));
}

void SampleFlightTest::theProgramWritesWhatTheLineNames_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("status");
    const auto list = [](const char* text) {
        return QString::fromLatin1(text).split(QLatin1Char(' '), Qt::SkipEmptyParts);
    };
    QTest::newRow("a log") << list("OUT --log-only --minutes 0.02 --thermal 35 --recordings 2")
                           << 0;
    QTest::newRow("help") << list("--help") << 0;
    QTest::newRow("no folder") << list("") << 2;
    QTest::newRow("two folders") << list("OUT OUT2") << 2;
    QTest::newRow("unknown option") << list("OUT --colour red") << 2;
    QTest::newRow("no number") << list("OUT --minutes long") << 2;
    QTest::newRow("no such camera") << list("OUT --thermal 31") << 2;
    QTest::newRow("no recording") << list("OUT --recordings 0") << 2;
    QTest::newRow("no place to write to") << list("/dev/null/card --log-only") << 1;
}

void SampleFlightTest::theProgramWritesWhatTheLineNames()
{
    QFETCH(QStringList, arguments);
    QTemporaryDir folder;
    arguments.replaceInStrings(QRegularExpression(QStringLiteral("^OUT")), folder.path());
    const ProgramRun run = runProgram(QStringLiteral(SAMPLE_FLIGHT_PROGRAM), arguments);
    QTEST(run.status, "status");
    QCOMPARE(run.error.isEmpty(), run.status == 0);
    QCOMPARE(run.error.count('\n'), run.status == 0 ? 0 : 1);
    const bool wroteLog = QTest::currentDataTag() == QByteArray("a log");
    QCOMPARE(QFileInfo::exists(QDir(folder.path()).filePath(SampleFlight::logFile())), wroteLog);
}

QTEST_GUILESS_MAIN(SampleFlightTest)
#include "SampleFlightTest.moc"
