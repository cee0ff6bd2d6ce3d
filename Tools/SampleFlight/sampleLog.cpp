// The half of SampleFlight that writes the log.

#include "SampleFlight/FlightLogWriter.h"
#include "SampleFlight/SampleFlight.h"

#include <QtEndian>

namespace corv {
namespace {

constexpr quint32 partsPerFrame = 4;
constexpr int wordsPerPart = 4800;
constexpr int nameBytes = 50;

constexpr quint32 cameraInfoMs[] = {1000, 2500};
constexpr quint32 preflightMs = 6000;
constexpr quint32 namingLeadMs = 3000; // the pilot names a flight before he starts the recorder

bool isWithin(quint32 timeMs, quint32 fromMs, quint32 toMs)
{
    return timeMs >= fromMs && timeMs < toMs;
}

} // namespace

struct SampleFlight::PacketIds
{
    int state = 0;
    int camera = 0;
    int start = 0;
    int stop = 0;
    int mission = 0;
    int poi = 0;
    int thermalInfo = 0;
    int thermalStatus = 0;
    int thermalVideo = 0;
};

SampleFlight::PacketIds SampleFlight::describe(FlightLogWriter& log) const
{
    PacketIds ids;
    ids.state = log.describe("state_estimation", {{"time", "UINT32", 1},
                                                  {"euler_angles", "FLOAT", 3},
                                                  {"heading_reference", "FLOAT", 1},
                                                  {"altitude", "FLOAT", 1},
                                                  {"altitude_telem_ref", "FLOAT", 1}});
    ids.camera = log.describe("camera_cmd", {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}});
    ids.start = log.describe("mobius_start_rec", {{"mobius_start_rec", "UINT32", 1}});
    ids.stop = log.describe("mobius_stop_rec", {{"mobius_stop_rec", "UINT32", 1}});
    ids.mission = log.describe("mission_info", {{"time", "UINT32", 1},
                                                {"mission_name", "INT8", nameBytes},
                                                {"flight_name", "INT8", nameBytes},
                                                {"flight_number", "UINT8", 1}});
    ids.poi = log.describe("point_of_interest", {{"point_of_interest", "UINT32", 1}});
    if (m_options.thermalCamera == 0)
        return ids;
    ids.thermalInfo = log.describe("lepton_info", {{"lepton_type", "UINT8", 1}});
    ids.thermalStatus =
        log.describe("lepton_status", {{"time", "UINT32", 1}, {"frame_counter", "UINT32", 1}});
    ids.thermalVideo = log.describe("lepton_video", {{"image", "UINT16", wordsPerPart},
                                                     {"image_part", "UINT8", 1},
                                                     {"frame_counter", "UINT32", 1}});
    return ids;
}

bool SampleFlight::writeLog(const QString& path) const
{
    FlightLogWriter log(path);
    log.spoilEvery(m_options.spoilPacketEvery);
    const PacketIds ids = describe(log);
    if (!log.begin())
        return false;
    const quint32 landedMs = m_recordings.back().stopMs + landingMs;
    quint32 thermal = firstThermalFrame;
    for (quint32 timeMs = 0; timeMs < landedMs || log.size() < m_options.leastLogBytes;
         timeMs += stateRecordMs) {
        writeState(log, ids, timeMs);
        writeEvents(log, ids, timeMs, timeMs + stateRecordMs);
        while (m_options.thermalCamera != 0 && thermalTimeMs(thermal) < timeMs + stateRecordMs)
            writeThermalFrame(log, ids, thermal++);
    }
    return log.finish(m_options.cutTailBytes);
}

void SampleFlight::writeState(FlightLogWriter& log, const PacketIds& ids, quint32 timeMs) const
{
    const State state = stateAt(timeMs);
    log.write(ids.state, Payload()
                             .u32(timeMs)
                             .f32(state.roll)
                             .f32(state.pitch)
                             .f32(state.yaw)
                             .f32(state.headingReference)
                             .f32(state.altitude)
                             .f32(state.altitudeReference));
    if (timeMs % cameraRecordMs == 0)
        log.write(ids.camera, Payload().u32(timeMs).f32(state.cameraPitch));
}

void SampleFlight::writeEvents(FlightLogWriter& log, const PacketIds& ids, quint32 fromMs,
                               quint32 toMs) const
{
    if (m_options.thermalCamera != 0) {
        for (const quint32 timeMs : cameraInfoMs) {
            if (isWithin(timeMs, fromMs, toMs))
                log.write(ids.thermalInfo,
                          Payload().u8(static_cast<quint8>(m_options.thermalCamera)));
        }
    }
    if (isWithin(preflightMs, fromMs, toMs))
        writeNaming(log, ids, preflightMs, QStringLiteral("Pre-flight check"),
                    QStringLiteral("Motors"), 1);
    int number = 2;
    for (const Recording& recording : m_recordings) {
        ++number;
        if (isWithin(recording.startMs - namingLeadMs, fromMs, toMs))
            writeNaming(log, ids, recording.startMs - namingLeadMs, missionName(), flightName(),
                        number);
        if (isWithin(recording.startMs, fromMs, toMs))
            log.write(ids.start, Payload().u32(recording.startMs));
        if (isWithin(recording.stopMs, fromMs, toMs))
            log.write(ids.stop, Payload().u32(recording.stopMs));
    }
    for (const int poiMs : poisMs()) {
        const auto logMs = static_cast<quint32>(poiMs + logTimeOffset());
        if (isWithin(logMs, fromMs, toMs))
            log.write(ids.poi, Payload().u32(logMs));
    }
}

void SampleFlight::writeNaming(FlightLogWriter& log, const PacketIds& ids, quint32 timeMs,
                               const QString& mission, const QString& flight, int number) const
{
    log.write(ids.mission, Payload()
                               .u32(timeMs)
                               .text(mission.toUtf8(), nameBytes)
                               .text(flight.toUtf8(), nameBytes)
                               .u8(static_cast<quint8>(number)));
}

void SampleFlight::writeThermalFrame(FlightLogWriter& log, const PacketIds& ids,
                                     quint32 frame) const
{
    log.write(ids.thermalStatus, Payload().u32(thermalTimeMs(frame)).u32(frame));
    const cv::Mat raw = thermalFrame(frame);
    QByteArray image(wordsPerPart * 2, Qt::Uninitialized);
    for (quint32 part = 0; part < partsPerFrame; ++part) {
        const quint32 sent = (frame - firstThermalFrame) * partsPerFrame + part + 1;
        if (m_options.losePartEvery > 0 &&
            sent % static_cast<quint32>(m_options.losePartEvery) == 0)
            continue;
        const quint16* words = raw.ptr<quint16>() + size_t{part} * wordsPerPart;
        qToBigEndian<quint16>(words, wordsPerPart, image.data());
        log.write(ids.thermalVideo,
                  Payload().bytes(image).u8(static_cast<quint8>(part)).u32(frame));
    }
}

} // namespace corv
