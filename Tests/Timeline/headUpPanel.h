#pragma once

#include "paintedTexts.h"
#include "timelineSupport.h"

#include "Timeline/HeadUpDisplay.h"
#include "Timeline/instruments.h"

#include <algorithm>
#include <cmath>

namespace corv::test {

/// The video, and the log time of its first frame.
constexpr int durationMs = 60000;
constexpr quint32 start = videoStartInLogMs;

constexpr int stateGroup = 3;
constexpr int cameraGroup = 4;

constexpr int panelWidth = 170;
constexpr int panelHeight = 600;

constexpr int rowHeight = 30;

/// The row of the instrument with this label. Tests find rows by it, so that another instrument may
/// be anywhere in the table; -1 if there is none.
inline int rowOf(const char* label)
{
    const std::vector<HudRow>& rows = hudInstruments();
    const auto found = std::find_if(rows.begin(), rows.end(), [label](const HudRow& row) {
        return qstrcmp(row.label, label) == 0;
    });
    return found == rows.end() ? -1 : static_cast<int>(found - rows.begin());
}

inline int rowCount()
{
    return static_cast<int>(hudInstruments().size());
}

/// Top of the text of a row: those above it that have a dial are higher by the width of the panel
/// and a gap.
inline int rowTop(int row)
{
    int top = 0;
    for (int above = 0; above < row; ++above) {
        const bool hasDial =
            hudInstruments()[static_cast<size_t>(above)].dial != HudRow::Dial::none;
        top += rowHeight + (hasDial ? panelWidth + 10 : 0);
    }
    return top;
}

/// One packet of the attitude, in radians and metres, at a log time.
struct State
{
    quint32 time = 0;
    float roll = 0;
    float pitch = 0;
    float yaw = 0;
    float headingReference = 0;
    float altitude = 0;
    float altitudeReference = 0;
};

inline LogBuilder& addStateGroup(LogBuilder& log)
{
    return log.addGroup("state_estimation", stateGroup,
                        {{"time", "UINT32", 1},
                         {"euler_angles", "FLOAT", 3},
                         {"heading_reference", "FLOAT", 1},
                         {"altitude", "FLOAT", 1},
                         {"altitude_telem_ref", "FLOAT", 1}});
}

inline LogBuilder& addState(LogBuilder& log, const State& state)
{
    QByteArray payload = LogBuilder::u32(state.time);
    for (const float value : {state.roll, state.pitch, state.yaw, state.headingReference,
                              state.altitude, state.altitudeReference})
        payload += LogBuilder::f32(value);
    return log.addPacket(stateGroup, payload);
}

inline LogBuilder& addCameraGroup(LogBuilder& log)
{
    return log.addGroup("camera_cmd", cameraGroup,
                        {{"time", "UINT32", 1}, {"servo_angle", "FLOAT", 1}});
}

inline LogBuilder& addCamera(LogBuilder& log, quint32 time, float angle)
{
    return log.addPacket(cameraGroup, LogBuilder::u32(time) + LogBuilder::f32(angle));
}

inline float radians(double degrees)
{
    return static_cast<float>(degrees * M_PI / 180.0);
}

/// The panel on a log, 170 pixels wide.
struct Panel
{
    Panel() { hud.setSize(QSizeF(panelWidth, panelHeight)); }

    explicit Panel(const LogBuilder& log) : Panel()
    {
        parsed = parse(parser, log, durationMs);
        hud.setLogParser(&parser);
        hud.updateLogData();
    }

    /// The texts that are painted in a row, joined.
    QString textsOfRow(int row)
    {
        TextDevice device({panelWidth, panelHeight});
        QPainter painter(&device);
        hud.paint(&painter);
        painter.end();
        QString joined;
        for (const PaintedText& text : device.texts()) {
            // Longer ones than the panel is wide begin beside it.
            if (text.baseline.y() > rowTop(row) && text.baseline.y() < rowTop(row) + rowHeight)
                joined += text.text;
        }
        return joined;
    }

    /// The same at a moment of the video.
    QString textsOfRow(int row, int videoMs)
    {
        hud.setVideoPosition(timeAt(videoMs));
        return textsOfRow(row);
    }

    bool parsed = false;
    LogParser parser;
    HeadUpDisplay hud;
};

/// What textsOfRow() gives for a row with this value; for an empty one, the label alone.
inline QString texts(int row, const QString& value)
{
    return QString::fromLatin1(hudInstruments().at(static_cast<size_t>(row)).label) + value;
}

const QColor discColour(0x55, 0x55, 0x55);

inline bool isNeedle(const QColor& colour)
{
    return colour.green() > 200 && colour.red() < 60 && colour.blue() < 120;
}

inline int needlePixels(const QImage& image, const QRect& rect)
{
    int count = 0;
    for (int y = rect.top(); y <= rect.bottom(); ++y) {
        for (int x = rect.left(); x <= rect.right(); ++x)
            count += isNeedle(image.pixelColor(x, y)) ? 1 : 0;
    }
    return count;
}

/// Both dials at this width: centre and the square around it.
inline QPoint dialCentre(const char* label)
{
    return {85, rowTop(rowOf(label)) + rowHeight + 85};
}
const QPoint compassCentre = dialCentre("Heading");
const QPoint cameraCentre = dialCentre("Cam pitch");

inline QRect discAround(const QPoint& centre)
{
    return QRect(centre - QPoint(84, 84), QSize(168, 168));
}

} // namespace corv::test
