#include "HostileLogs.h"

#include "Support/LogBuilder.h"

#include <QRandomGenerator>
#include <functional>

namespace corv::test {
namespace {

enum GroupId { startRec = 1, stopRec, mission, pois, camera, state, servo, video, status };

constexpr quint32 startMs = 10'000;
constexpr quint32 recordingMs = 7'000;
constexpr quint32 firstFrameMs = startMs + 690;
constexpr int thermalPixels = 160 * 120;

/// The parts of a flight that can be wrong; the defaults are right.
struct Flight
{
    QByteArray timeType = "UINT32";
    QByteArray angleType = "FLOAT";
    QByteArray poiType = "UINT32";
    QByteArray counterType = "UINT32";
    QByteArray imageType = "UINT16";
    QByteArray partType = "UINT8";
    int angles = 3;
    int imageWords = thermalPixels / 4;
    int missionColumns = 16;
    int recColumns = 1;
    int poiCount = 3;
    int thermalFrames = 6;
    quint32 firstCounter = 1;
    bool withStatusRows = true;
    bool withStatusTime = true;
    bool withStateTime = true;
    bool withRecordings = true;
    std::function<void(LogBuilder&)> more; ///< at the end
};

QByteArray valueOf(const QByteArray& type, quint32 value)
{
    if (type == "UINT8" || type == "INT8")
        return LogBuilder::u8(value & 0xFF);
    if (type == "UINT16" || type == "INT16")
        return LogBuilder::u16(value & 0xFFFF);
    if (type == "FLOAT")
        return LogBuilder::f32(static_cast<float>(value));
    if (type == "DOUBLE")
        return LogBuilder::f64(value);
    return LogBuilder::u32(value);
}

QByteArray valuesOf(const QByteArray& type, quint32 first, int count)
{
    QByteArray bytes;
    for (int index = 0; index < count; ++index)
        bytes += valueOf(type, first + static_cast<quint32>(index));
    return bytes;
}

void describe(LogBuilder& log, const Flight& flight)
{
    log.addGroup("mobius_start_rec", startRec, {{"mobius_start_rec", "UINT32", flight.recColumns}});
    log.addGroup("mobius_stop_rec", stopRec, {{"mobius_stop_rec", "UINT32", flight.recColumns}});
    log.addGroup("mission_info", mission,
                 {{"time", flight.timeType, 1},
                  {"mission_name", "STRING", flight.missionColumns},
                  {"flight_name", "STRING", flight.missionColumns},
                  {"flight_number", "UINT8", 1}});
    log.addGroup("point_of_interest", pois, {{"point_of_interest", flight.poiType, 1}});
    log.addGroup("lepton_info", camera, {{"lepton_type", "UINT8", 1}});
    std::vector<LogBuilder::Var> states{{"euler_angles", flight.angleType, flight.angles},
                                        {"altitude", flight.angleType, 1}};
    if (flight.withStateTime)
        states.push_back({"time", flight.timeType, 1});
    log.addGroup("state_estimation", state, states);
    log.addGroup("camera_cmd", servo,
                 {{"time", flight.timeType, 1}, {"servo_angle", flight.angleType, 1}});
    log.addGroup("lepton_video", video,
                 {{"frame_counter", flight.counterType, 1},
                  {"image_part", flight.partType, 1},
                  {"image", flight.imageType, flight.imageWords}});
    std::vector<LogBuilder::Var> statuses{{"frame_counter", flight.counterType, 1}};
    if (flight.withStatusTime)
        statuses.push_back({"time", flight.timeType, 1});
    log.addGroup("lepton_status", status, statuses);
}

void addThermalFrames(LogBuilder& log, const Flight& flight)
{
    for (int frame = 0; frame < flight.thermalFrames; ++frame) {
        const quint32 counter = flight.firstCounter + static_cast<quint32>(frame);
        for (quint32 part = 0; part < 4; ++part) {
            log.addPacket(video, valueOf(flight.counterType, counter) +
                                     valueOf(flight.partType, part) +
                                     valuesOf(flight.imageType, 7000, flight.imageWords));
        }
        if (!flight.withStatusRows)
            continue;
        QByteArray row = valueOf(flight.counterType, counter);
        if (flight.withStatusTime)
            row += valueOf(flight.timeType, firstFrameMs + static_cast<quint32>(frame) * 900);
        log.addPacket(status, row);
    }
}

QByteArray logOf(const Flight& flight)
{
    LogBuilder log;
    describe(log, flight);
    if (flight.withRecordings)
        log.addPacket(startRec, valuesOf("UINT32", startMs, flight.recColumns));
    log.addPacket(camera, LogBuilder::u8(35));
    log.addPacket(mission, valueOf(flight.timeType, 5000) +
                               LogBuilder::text("Bridge", flight.missionColumns) +
                               LogBuilder::text("North pier", flight.missionColumns) +
                               LogBuilder::u8(7));
    for (int index = 0; index < flight.poiCount; ++index)
        log.addPacket(pois, valueOf(flight.poiType, firstFrameMs + 1 + 7u * quint32(index)));
    for (quint32 ms = 0; ms < recordingMs; ms += 100) {
        QByteArray row =
            valuesOf(flight.angleType, ms / 100, flight.angles) + valueOf(flight.angleType, 12);
        if (flight.withStateTime)
            row += valueOf(flight.timeType, startMs + ms);
        log.addPacket(state, row);
        log.addPacket(servo,
                      valueOf(flight.timeType, startMs + ms) + valueOf(flight.angleType, ms / 100));
    }
    addThermalFrames(log, flight);
    if (flight.withRecordings)
        log.addPacket(stopRec, valuesOf("UINT32", startMs + recordingMs, flight.recColumns));
    if (flight.more)
        flight.more(log);
    return log.bytes();
}

QByteArray changed(const std::function<void(Flight&)>& change)
{
    Flight flight;
    change(flight);
    return logOf(flight);
}

QByteArray replaced(const char* before, const char* after)
{
    QByteArray bytes = soundLog();
    bytes.replace(before, after);
    return bytes;
}

void addCutLogs(std::vector<HostileLog>& logs)
{
    const QByteArray whole = soundLog();
    const int end = whole.indexOf("</main>");
    const int pictures = whole.indexOf(QByteArray("\x86\x37\x08", 3), end);
    logs.push_back({"nothing", {}});
    logs.push_back({"one byte", whole.left(1)});
    logs.push_back({"cut in the description", whole.left(end / 2)});
    logs.push_back({"cut in its last word", whole.left(end + 6)});
    logs.push_back({"cut behind it", whole.left(end + 7)});
    logs.push_back({"cut behind the separator", whole.left(end + 8)});
    logs.push_back({"cut in a marker", whole.left(end + 9)});
    logs.push_back({"cut in a size", whole.left(end + 12)});
    logs.push_back({"cut in a payload", whole.left(end + 15)});
    logs.push_back({"cut in a picture", whole.left(pictures + 1000)});
    logs.push_back({"cut before the checksum", whole.left(whole.size() - 1)});
    logs.push_back({"without its beginning", whole.mid(end / 3)});
    logs.push_back({"two in one", whole + whole});
}

void addSpoiltLogs(std::vector<HostileLog>& logs)
{
    QRandomGenerator random(20260601);
    const QByteArray whole = soundLog();
    const int packets = whole.indexOf("</main>") + 8;
    for (int number = 0; number < 6; ++number) {
        // Alternately anywhere, in the description alone, and in the packets alone.
        const int from = number % 3 == 2 ? packets : 0;
        const int to = number % 3 == 1 ? packets : whole.size();
        QByteArray bytes = whole;
        for (int flips = 0; flips < 1 << number; ++flips) {
            const int place = from + random.bounded(to - from);
            bytes[place] = static_cast<char>(bytes[place] ^ (1 << random.bounded(8)));
        }
        logs.push_back({"flipped bits, " + QByteArray::number(number), bytes});
    }
    QByteArray noise = whole;
    for (int place = packets; place < noise.size(); ++place)
        noise[place] = static_cast<char>(random.bounded(256));
    logs.push_back({"noise for packets", noise});
}

void addMisdescribedLogs(std::vector<HostileLog>& logs)
{
    for (const char* type : {"UINT8", "DOUBLE", "STRING", ""}) {
        const QByteArray word(type);
        logs.push_back({"times of " + word, changed([&](Flight& f) { f.timeType = word; })});
        logs.push_back({"angles of " + word, changed([&](Flight& f) { f.angleType = word; })});
        logs.push_back(
            {"points of interest of " + word, changed([&](Flight& f) { f.poiType = word; })});
        logs.push_back({"counters of " + word, changed([&](Flight& f) { f.counterType = word; })});
        logs.push_back({"parts of " + word, changed([&](Flight& f) { f.partType = word; })});
        logs.push_back({"pictures of " + word, changed([&](Flight& f) {
                            f.imageType = word;
                            f.imageWords = 100;
                        })});
    }
    for (const int words : {0, 1, 7, 4799, 4801, 9600, 19200, 19201}) {
        logs.push_back({"pictures of words: " + QByteArray::number(words),
                        changed([&](Flight& f) { f.imageWords = words; })});
    }
    for (const int columns : {0, 51, 255, 5000}) {
        logs.push_back({"names of columns: " + QByteArray::number(columns),
                        changed([&](Flight& f) { f.missionColumns = columns; })});
    }
    for (const int columns : {0, 2, 300}) {
        logs.push_back({"recordings of columns: " + QByteArray::number(columns),
                        changed([&](Flight& f) { f.recColumns = columns; })});
    }
    logs.push_back({"one angle", changed([](Flight& f) { f.angles = 1; })});
    logs.push_back({"no angle", changed([](Flight& f) { f.angles = 0; })});
    logs.push_back(
        {"no time of thermal frames", changed([](Flight& f) { f.withStatusTime = false; })});
    logs.push_back({"no time of movements", changed([](Flight& f) { f.withStateTime = false; })});
    logs.push_back({"negative count", replaced("<nb>4800<", "<nb>-4800<")});
    logs.push_back({"endless count", replaced("<nb>4800<", "<nb>99999999999999999999<")});
    logs.push_back({"count that overflows", replaced("<nb>4800<", "<nb>2147483647<")});
    logs.push_back({"count that is a word", replaced("<nb>4800<", "<nb>many<")});
    logs.push_back({"one id for all", replaced("<id>9<", "<id>8<")});
    logs.push_back({"id beyond a byte", replaced("<id>9<", "<id>265<")});
    logs.push_back({"one name for two", replaced("lepton_status", "lepton_video")});
    logs.push_back(
        {"group without vars",
         replaced("<var><name>lepton_type</name><type>UINT8</type><nb>1</nb></var>", "")});
    logs.push_back({"negative version", replaced("<log_version>1<", "<log_version>-1<")});
    logs.push_back({"huge version", replaced("<log_version>1<", "<log_version>1e308<")});
    logs.push_back({"old version", replaced("<log_version>1<", "<log_version>0<")});
}

void addOverflowingLogs(std::vector<HostileLog>& logs)
{
    logs.push_back(
        {"no row for the thermal frames", changed([](Flight& f) { f.withStatusRows = false; })});
    logs.push_back({"no thermal frames", changed([](Flight& f) { f.thermalFrames = 0; })});
    logs.push_back({"no recording", changed([](Flight& f) { f.withRecordings = false; })});
    logs.push_back(
        {"counters that wrap", changed([](Flight& f) { f.firstCounter = 0xFFFFFFFDu; })});
    logs.push_back(
        {"a million points of interest", changed([](Flight& f) { f.poiCount = 1'000'000; })});
    logs.push_back({"one huge counter", changed([](Flight& f) {
                        f.more = [](LogBuilder& log) {
                            log.addPacket(status, LogBuilder::u32(0xFFFFFFFFu) +
                                                      LogBuilder::u32(0xFFFFFFFFu));
                        };
                    })});
    logs.push_back({"times that run back", changed([](Flight& f) {
                        f.more = [](LogBuilder& log) {
                            for (quint32 ms = 20'000; ms > 0; ms -= 500)
                                log.addPacket(status, LogBuilder::u32(ms) + LogBuilder::u32(ms));
                        };
                    })});
    logs.push_back({"recordings without end", changed([](Flight& f) {
                        f.more = [](LogBuilder& log) {
                            for (quint32 index = 0; index < 5000; ++index)
                                log.addPacket(startRec, LogBuilder::u32(0xFFFFFFFFu - index));
                        };
                    })});
    logs.push_back({"empty packets", changed([](Flight& f) {
                        f.more = [](LogBuilder& log) {
                            for (int index = 0; index < 20'000; ++index)
                                log.addPacket(index % 12, {});
                        };
                    })});
    logs.push_back({"packet that claims the rest", changed([](Flight& f) {
                        f.more = [](LogBuilder& log) {
                            log.addPacketWithSize(video, 65535, LogBuilder::u32(1));
                        };
                    })});
}

} // namespace

QByteArray soundLog()
{
    return logOf({});
}

std::vector<HostileLog> hostileLogs()
{
    std::vector<HostileLog> logs;
    addCutLogs(logs);
    addSpoiltLogs(logs);
    addMisdescribedLogs(logs);
    addOverflowingLogs(logs);
    return logs;
}

} // namespace corv::test
