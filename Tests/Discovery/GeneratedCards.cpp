#include "GeneratedCards.h"

#include "Discovery/filePairing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

namespace corv::test {
namespace {

constexpr qint64 dayMs = 1'527'840'000'000; // a morning in 2018

class Dice
{
public:
    explicit Dice(unsigned seed) : m_random(seed) {}

    // The standard distributions differ from library to library.
    qint64 between(qint64 least, qint64 most)
    {
        return least + static_cast<qint64>(m_random() % static_cast<quint64>(most - least + 1));
    }
    bool happens(int percent) { return between(1, 100) <= percent; }

private:
    std::mt19937_64 m_random;
};

struct File
{
    QString path;
    qint64 timeMs;
    qint64 lengthMs; // of a video
    int log;         // of a video: position in Folder::logs
    std::vector<RecEvent> recordings;
    size_t flight = 0; // of a video, counted through all cards
};

struct Folder
{
    std::vector<File> videos;
    std::vector<File> logs;
    size_t flights = 0;
};

// Whole frames at one of the rates of the cameras.
qint64 wholeFrames(qint64 lengthMs, double fps)
{
    return std::llround(std::floor(static_cast<double>(lengthMs) * fps / 1000) * 1000 / fps);
}

void addVideo(Folder& folder, Dice& dice, const CardHistory& history, int card, int* number,
              qint64 endMs, qint64 lengthMs)
{
    const auto name = [&] {
        return QStringLiteral("/videos/CORV%1%2.MOV")
            .arg(history.cards > 1 ? QStringLiteral("%1_").arg(QLatin1Char(char('A' + card)))
                                   : QString())
            .arg((*number)++, 4, 10, QLatin1Char('0'));
    };
    const int log = static_cast<int>(folder.logs.size());
    const size_t flight = folder.flights++;
    const qint64 partMs = 300'000 + dice.between(-2000, 2000);
    qint64 leftMs = lengthMs;
    while (history.inParts && leftMs > partMs) {
        leftMs -= partMs;
        folder.videos.push_back({name(), endMs - leftMs, partMs, log, {}, flight});
    }
    folder.videos.push_back({name(), endMs, leftMs, log, {}, flight});
    if (dice.happens(15))
        ++*number; // a picture in between
}

void addCard(Folder& folder, Dice& dice, const CardHistory& history, int card)
{
    constexpr std::array<double, 3> rates = {25, 30'000.0 / 1001, 60'000.0 / 1001};
    const double fps = rates[static_cast<size_t>(dice.between(0, 2))];
    const auto flights = static_cast<int>(dice.between(3, 20));
    const auto logNumber = static_cast<int>(dice.between(1, 800));
    int number = static_cast<int>(dice.between(1, 50)) + 1000 * card;
    qint64 nowMs = dayMs + card * dice.between(0, 7'200'000);
    int flight = 0;
    while (flight < flights) {
        const int inLog = static_cast<int>(
            std::min<qint64>(flights - flight, dice.happens(15) ? dice.between(2, 3) : 1));
        const qint64 powerOnMs = nowMs - dice.between(20'000, 90'000);
        std::vector<RecEvent> recordings;
        for (int i = 0; i < inLog; ++i, ++flight) {
            const qint64 lengthMs =
                wholeFrames(history.alikeLengths ? dice.between(600'000, 720'000)
                                                 : dice.between(120'000, 1'200'000),
                            fps);
            const qint64 loggedMs = lengthMs + 1000 + dice.between(-1000, 1000);
            recordings.push_back({static_cast<quint32>(nowMs - powerOnMs),
                                  static_cast<quint32>(nowMs - powerOnMs + loggedMs)});
            nowMs += loggedMs;
            addVideo(folder, dice, history, card, &number, nowMs, lengthMs);
            nowMs += dice.between(15'000, 60'000);
        }
        nowMs += dice.between(5000, 60'000);
        folder.logs.push_back(
            {QStringLiteral("/logs/%1LOG%2.log")
                 .arg(history.cards > 1 ? QString(QLatin1Char(char('A' + card))) : QString())
                 .arg(logNumber + static_cast<int>(folder.logs.size()), 5, 10, QLatin1Char('0')),
             nowMs, 0, 0, recordings});
        nowMs += dice.between(120'000, 1'500'000); // another battery
    }
}

void loseTimes(Folder& folder, Dice& dice)
{
    qint64 nowMs = dayMs + 90'000'000;
    const bool logsFirst = dice.happens(50);
    const auto copy = [&](std::vector<File>& files, qint64 perFileMs) {
        for (File& file : files) {
            nowMs += perFileMs;
            file.timeMs = nowMs;
        }
    };
    if (logsFirst)
        copy(folder.logs, 300);
    copy(folder.videos, dice.happens(50) ? 20 : 15'000);
    if (!logsFirst)
        copy(folder.logs, 300);
}

template <typename Files>
void rename(Files& files, Dice& dice, const QString& pattern)
{
    for (File& file : files)
        if (dice.happens(10))
            file.path = pattern.arg(dice.between(0, 99'999));
}

} // namespace

CardHistory drawHistory(unsigned seed)
{
    Dice dice(seed);
    CardHistory history;
    history.timesLost = dice.happens(50);
    history.alikeLengths = dice.happens(33);
    history.filesMissing = dice.happens(50);
    history.renamed = dice.happens(20);
    history.inParts = dice.happens(25);
    history.cards = dice.happens(20) ? 3 : 1;
    return history;
}

GeneratedCard generateCard(unsigned seed, const CardHistory& history)
{
    Dice dice(seed * 2 + 1);
    Folder folder;
    for (int card = 0; card < history.cards; ++card)
        addCard(folder, dice, history, card);
    if (history.timesLost)
        loseTimes(folder, dice);
    if (history.renamed) {
        rename(folder.videos, dice, QStringLiteral("/videos/Inspection %1.mov"));
        rename(folder.logs, dice, QStringLiteral("/logs/flight %1.log"));
    }
    GeneratedCard card;
    std::vector<int> positions;
    QList<QFileInfo> logFiles;
    for (const File& log : folder.logs) {
        const bool missing = history.filesMissing && dice.happens(20);
        positions.push_back(missing ? -1 : static_cast<int>(card.logs.size()));
        if (!missing)
            card.logs.push_back({log.path, log.timeMs, log.recordings});
    }
    const auto timed = [](const QString& path, qint64 timeMs) {
        TimedFile file;
        file.file = QFileInfo(path);
        file.time = QDateTime::fromMSecsSinceEpoch(timeMs);
        file.timeMs = timeMs;
        return file;
    };
    std::vector<size_t> byTime(card.logs.size());
    for (size_t i = 0; i < byTime.size(); ++i)
        byTime[i] = i;
    std::stable_sort(byTime.begin(), byTime.end(), [&card](size_t a, size_t b) {
        return card.logs[a].timeMs < card.logs[b].timeMs;
    });
    std::vector<TimedFile> sortedLogs;
    for (const size_t i : byTime)
        sortedLogs.push_back(timed(card.logs[i].path, card.logs[i].timeMs));
    std::vector<size_t> flights;
    std::vector<bool> isWhole(folder.flights, true);
    for (const File& video : folder.videos) {
        if (history.filesMissing && dice.happens(20)) {
            isWhole[video.flight] = false;
            continue;
        }
        flights.push_back(video.flight);
        const int paired = pairedLog(timed(video.path, video.timeMs), sortedLogs);
        card.videos.push_back({video.path, video.timeMs, video.lengthMs,
                               paired < 0 ? -1 : static_cast<int>(byTime[size_t(paired)])});
        card.truth.push_back(positions[static_cast<size_t>(video.log)]);
    }
    for (const size_t flight : flights)
        card.whole.push_back(isWhole[flight]);
    return card;
}

} // namespace corv::test
