#pragma once

#include "Log/LogParser.h"
#include "Video/VideoPlayer.h"

#include <QObject>
#include <QPointer>

namespace corv {

/// Shows the flight instruments in what is exported from a player, or does not: keeps its inset up
/// to date with the log. Player and parser are not owned. Interface thread only.
class ExportInstruments : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer)
    Q_PROPERTY(corv::LogParser* logParser READ logParser WRITE setLogParser)
    Q_PROPERTY(bool shown READ isShown WRITE setShown NOTIFY shownChanged)
    Q_PROPERTY(
        bool imperialUnits READ imperialUnits WRITE setImperialUnits NOTIFY imperialUnitsChanged)

public:
    using QObject::QObject;

    VideoPlayer* player() const { return m_player; }
    void setPlayer(VideoPlayer* player);
    LogParser* logParser() const { return m_logParser; }
    void setLogParser(LogParser* logParser);

    /// Off at first.
    bool isShown() const { return m_isShown; }
    void setShown(bool shown);

    /// Lengths in feet; in metres at first.
    bool imperialUnits() const { return m_imperialUnits; }
    void setImperialUnits(bool imperialUnits);

signals:
    void shownChanged();
    void imperialUnitsChanged();

private:
    void update();

    QPointer<VideoPlayer> m_player;
    QPointer<LogParser> m_logParser;
    bool m_isShown = false;
    bool m_imperialUnits = false;
};

} // namespace corv
