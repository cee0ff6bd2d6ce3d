#include "Bench.h"

#include "Discovery/FlightFilesMatcher.h"
#include "Discovery/flightPairing.h"
#include "Discovery/flightSearch.h"
#include "Log/LogDecoder.h"
#include "Log/LogFile.h"
#include "Video/VideoInfoReader.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QHash>
#include <algorithm>
#include <atomic>
#include <memory>
#include <opencv2/core.hpp>
#include <opencv2/videoio.hpp>
#include <sys/resource.h>
#include <vector>

namespace corv::bench {
namespace {

constexpr int kVideos = 20;
constexpr int kLogs = 6;
constexpr qint64 kLogBytes = 200'000'000;

const QDateTime kStart(QDate(2018, 6, 1), QTime(12, 0));

[[noreturn]] void giveUp(const QString& path)
{
    qFatal("cannot make the input %s", qPrintable(path));
}

// The file appears under its name only when it is whole: an interrupted run leaves no half input.
void make(const QString& path, const std::function<bool(const QString&)>& write)
{
    if (QFile::exists(path))
        return;
    QDir().mkpath(QFileInfo(path).path());
    const QString unfinished =
        QFileInfo(path).path() + QStringLiteral("/unfinished-") + QFileInfo(path).fileName();
    QFile::remove(unfinished);
    if (!write(unfinished) || !QFile::rename(unfinished, path))
        giveUp(path);
}

bool writeEmpty(const QString& path)
{
    return QFile(path).open(QIODevice::WriteOnly);
}

QByteArray packet(char id, const QByteArray& payload)
{
    QByteArray bytes("\x86\x37", 2);
    bytes += id;
    bytes += '\0';
    bytes += static_cast<char>(payload.size());
    bytes += payload;
    unsigned sum = 0;
    for (const char byte : payload)
        sum += static_cast<unsigned char>(byte);
    return bytes + static_cast<char>(sum);
}

QByteArray number(quint32 value)
{
    return QByteArray(reinterpret_cast<const char*>(&value), sizeof value);
}

QByteArray group(const QByteArray& name, int id, const QByteArray& vars)
{
    return "<group><id>" + QByteArray::number(id) + "</id><name>" + name + "</name>" + vars +
           "</group>";
}

QByteArray var(const QByteArray& name, const QByteArray& type, int nb)
{
    return "<var><name>" + name + "</name><type>" + type + "</type><nb>" + QByteArray::number(nb) +
           "</nb></var>";
}

// Attitude many times a second, with a recording and a naming at the head.
bool writeLog(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return false;
    file.write("<main><log_version>1</log_version><groups>" +
               group("mobius_start_rec", 1, var("mobius_start_rec", "UINT32", 1)) +
               group("mobius_stop_rec", 2, var("mobius_stop_rec", "UINT32", 1)) +
               group("mission_info", 3,
                     var("time", "UINT32", 1) + var("mission_name", "UINT8", 20) +
                         var("flight_name", "UINT8", 20) + var("flight_number", "UINT8", 1)) +
               group("attitude", 4, var("time", "UINT32", 1) + var("angles", "FLOAT", 12)) +
               "</groups></main>\n");
    file.write(packet(1, number(10'000)) + packet(2, number(12'000)) +
               packet(3, number(5000) + QByteArray("Line").leftJustified(20, '\0') +
                             QByteArray("Tower").leftJustified(20, '\0') + '\1'));
    quint32 time = 0;
    while (file.pos() < kLogBytes) {
        QByteArray block;
        for (int i = 0; i < 10'000; ++i, ++time)
            block += packet(4, number(time) + QByteArray(48, static_cast<char>(time)));
        if (file.write(block) != block.size())
            return false;
    }
    return true;
}

bool writeVideo(const QString& path)
{
    cv::VideoWriter writer(path.toStdString(), cv::CAP_FFMPEG,
                           cv::VideoWriter::fourcc('m', 'p', '4', 'v'), 25, cv::Size(320, 240));
    for (int frame = 0; writer.isOpened() && frame < 50; ++frame)
        writer.write(cv::Mat(240, 320, CV_8UC3, cv::Scalar::all(frame * 5)));
    return writer.isOpened();
}

struct Flights
{
    QList<QFileInfo> videos;
    QList<QFileInfo> logs;
    QHash<QString, QDateTime> times;

    FlightFilesMatcher::FileFacts facts() const
    {
        FlightFilesMatcher::FileFacts facts;
        facts.state = [this](const QFileInfo& file) { return times.value(file.filePath()); };
        return facts;
    }
};

Flights makeFlights(const QString& folder)
{
    Flights flights;
    for (int i = 0; i < kLogs; ++i) {
        const QString path = QStringLiteral("%1/log%2.log").arg(folder).arg(i);
        make(path, writeLog);
        flights.logs.append(QFileInfo(path));
        flights.times[path] = kStart.addSecs(i * 10'000 + 1000);
    }
    for (int i = 0; i < kVideos; ++i) {
        const QString path = QStringLiteral("%1/video%2.mp4").arg(folder).arg(i);
        make(path, writeVideo);
        flights.videos.append(QFileInfo(path));
        flights.times[path] = kStart.addSecs((i % kLogs) * 10'000 + i);
    }
    return flights;
}

void fullSearch(const Flights& flights)
{
    const std::atomic<bool> abort{false};
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&abort, flights.facts())
            .matchFlightFiles(flights.videos, flights.logs, false, {});
    for (const FlightMatchData& match : matches)
        if (match.naming.undefined)
            qFatal("the search has not named %s", qPrintable(match.videoFile.filePath()));
}

// Reads every log as far as its packets are counted.
void countPackets(const Flights& flights)
{
    for (const QFileInfo& log : flights.logs) {
        std::atomic<bool> abort{false};
        delete LogDecoder(&abort).parseLog(log.filePath(),
                                           [&abort](int stage, int, int) { abort = stage == 2; });
    }
}

double processorSecondsOf(const std::function<void()>& work)
{
    const auto used = [] {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        const auto seconds = [](const timeval& time) {
            return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
        };
        return seconds(usage.ru_utime) + seconds(usage.ru_stime);
    };
    const double before = used();
    work();
    return used() - before;
}

// From setting the flag at that moment of the reading until the matcher has returned.
double secondsToAbort(const Flights& flights, int atStage, double atShare)
{
    std::atomic<bool> abort{false};
    QElapsedTimer sinceAbort;
    FlightFilesMatcher(&abort, flights.facts())
        .matchFlightFiles(flights.videos, flights.logs, false,
                          [&](int, int, int stage, int done, int total) {
                              if (abort || stage != atStage || done < atShare * total)
                                  return;
                              sinceAbort.start();
                              abort = true;
                          });
    return static_cast<double>(sinceAbort.nsecsElapsed()) / 1e9;
}

const Benchmark search("discovery-search", [](Report& report) {
    const Flights flights = makeFlights(report.inputFolder() + QStringLiteral("/discovery"));
    const QString input = QStringLiteral("20 videos sharing 6 logs of 200 MB");
    report.row(QStringLiteral("full search, peak memory / 100 MB"),
               peakBytesOf([&flights] { fullSearch(flights); }) / 1e8, 1, input);
    report.row(QStringLiteral("full search / counting the packets"),
               timeRatio([&] { fullSearch(flights); }, [&] { countPackets(flights); }, 3), 0.7,
               input);
    std::vector<double> ratios;
    for (int round = 0; round < 3; ++round)
        ratios.push_back(processorSecondsOf([&] { fullSearch(flights); }) /
                         processorSecondsOf([&] { countPackets(flights); }));
    report.row(QStringLiteral("full search, processor time / counting the packets"), median(ratios),
               1.3, input);
    const double slowest =
        std::max({secondsToAbort(flights, 0, 0), secondsToAbort(flights, 1, 0),
                  secondsToAbort(flights, 2, 0.01), secondsToAbort(flights, 2, 0.9)});
    report.row(QStringLiteral("abort while logs are read / 0.5 s"), slowest / 0.5, 1,
               QStringLiteral("the slowest of four moments"));
});

void quickSearch(const QString& folder)
{
    const std::atomic<bool> abort{false};
    const FlightFiles files = gatherFlightFiles(
        {folder + QStringLiteral("/videos"), folder + QStringLiteral("/logs"), false, false});
    const QList<FlightMatchData> matches =
        FlightFilesMatcher(&abort).matchFlightFiles(files.videos, files.logs, true, {});
    if (matchingRows(matches).size() != 2000 || !matches.last().matchFound)
        qFatal("the quick search has lost files");
}

void listAndStat(const QString& folder)
{
    for (const char* name : {"/videos", "/logs"}) {
        const QDir directory(folder + QLatin1String(name));
        for (const QFileInfo& file : directory.entryInfoList(QDir::Files, QDir::Unsorted))
            if (!file.lastModified().isValid())
                qFatal("no time for %s", qPrintable(file.filePath()));
    }
}

void makeDated(const QString& path, const QDateTime& time)
{
    make(path, writeEmpty);
    QFile file(path);
    if (!file.open(QIODevice::ReadWrite) ||
        !file.setFileTime(time, QFileDevice::FileModificationTime))
        giveUp(path);
}

const Benchmark quick("discovery-quick", [](Report& report) {
    const QString apart = report.inputFolder() + QStringLiteral("/discovery-quick-apart");
    const QString together = report.inputFolder() + QStringLiteral("/discovery-quick-together");
    for (int i = 0; i < 2000; ++i) {
        const QString video = QStringLiteral("/videos/VID_%1.mp4").arg(i, 5, 10, QLatin1Char('0'));
        const QString log = QStringLiteral("/logs/LOG_%1.log").arg(i, 5, 10, QLatin1Char('0'));
        makeDated(apart + video, kStart.addSecs(i * 600));
        makeDated(apart + log, kStart.addSecs(i * 600 + 300));
        makeDated(together + video, kStart);
        makeDated(together + log, kStart.addSecs(10));
    }
    const auto ratio = [](const QString& folder) {
        return timeRatio([&] { quickSearch(folder); }, [&] { listAndStat(folder); }, 15);
    };
    report.row(QStringLiteral("quick search / listing and stat"), ratio(apart), 2.5,
               QStringLiteral("2,000 videos and 2,000 logs"));
    report.row(QStringLiteral("quick search, one half hour / listing and stat"), ratio(together),
               2.5, QStringLiteral("as before, every log pairs with every video"));
});

const Benchmark alignment("discovery-alignment", [](Report& report) {
    std::vector<PairingVideo> videos;
    std::vector<PairingLog> logs;
    for (int i = 0; i < 500; ++i) { // times lost: every video has the same log by time
        const qint64 lengthMs = 120'000 + (i * 7919) % 1'080'000;
        videos.push_back(
            {QStringLiteral("/videos/CORV%1.MOV").arg(i, 4, 10, QLatin1Char('0')), 0, lengthMs, 0});
        logs.push_back({QStringLiteral("/logs/%1.log").arg(i),
                        1000,
                        {{10'000, static_cast<quint32>(11'000 + lengthMs)}}});
    }
    const double seconds = medianSeconds([&] {
        if (pairFlights(videos, logs).back().log != 499)
            qFatal("the alignment has lost a flight");
    });
    report.row(QStringLiteral("alignment / 50 ms"), seconds / 0.05, 1,
               QStringLiteral("500 videos with 500 recordings"));
});

} // namespace
} // namespace corv::bench
