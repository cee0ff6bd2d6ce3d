#pragma once

#include "Log/LogParser.h"
#include "Video/VideoPlayer.h"

#include <QObject>
#include <QPointer>

namespace corv {

/// What is shown in corners of the pictures that are exported from a player: the flight
/// instruments and the colour bar of the thermal overlay, each if it is wanted. Keeps the player's
/// insets up to date with the log. Player and parser are not owned. Interface thread only.
class ExportInsets : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer)
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser)
    Q_PROPERTY(
        bool instruments READ showsInstruments WRITE setShowsInstruments NOTIFY instrumentsChanged)
    Q_PROPERTY(
        bool thermalBar READ showsThermalBar WRITE setShowsThermalBar NOTIFY thermalBarChanged)
    Q_PROPERTY(
        bool imperialUnits READ imperialUnits WRITE setImperialUnits NOTIFY imperialUnitsChanged)

public:
    using QObject::QObject;

    VideoPlayer* player() const { return m_player; }
    void setPlayer(VideoPlayer* player);
    LogParser* logParser() const { return m_logParser; }
    void setLogParser(LogParser* logParser);

    /// The flight instruments; off at first.
    bool showsInstruments() const { return m_showsInstruments; }
    void setShowsInstruments(bool shown);

    /// The colour bar, in pictures that show the thermal overlay; off at first.
    bool showsThermalBar() const { return m_showsThermalBar; }
    void setShowsThermalBar(bool shown);

    /// Lengths in feet; in metres at first.
    bool imperialUnits() const { return m_imperialUnits; }
    void setImperialUnits(bool imperialUnits);

signals:
    void instrumentsChanged();
    void thermalBarChanged();
    void imperialUnitsChanged();

private:
    using Notify = void (ExportInsets::*)();
    void set(bool& field, bool value, Notify changed);
    void update();

    QPointer<VideoPlayer> m_player;
    QPointer<LogParser> m_logParser;
    bool m_showsInstruments = false;
    bool m_showsThermalBar = false;
    bool m_imperialUnits = false;
};

} // namespace corv
