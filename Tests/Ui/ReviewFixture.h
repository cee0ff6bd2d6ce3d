#pragma once

#include "UiFixture.h"

#include <QTemporaryDir>

namespace corv::test {

/// The media of a short flight, made at the first use in a folder that lives as long as the
/// process: a video of six seconds and a log whose one recording is that video.
class FlightMedia
{
public:
    static const FlightMedia& instance();

    /// A new folder below the media's, for what a test writes.
    QString newFolder() const;

    const QString& video() const { return m_video; }
    const QString& log() const { return m_log; }

    /// A log of the same names and points of interest, whose only recording is far longer than the
    /// video.
    const QString& otherLog() const { return m_otherLog; }

    /// A log of the flight by a drone with this thermal camera, -1 for none.
    QString logOfCamera(int leptonType) const;

    /// A log of the flight with the angle of its camera.
    QString logWithInstruments() const;

    /// A log of the flight with thermal frames: raw values from 7000 to 7159 in the first second,
    /// from 8000 to 8159 later.
    QString logWithThermal() const;

    /// A file that no decoder reads as a log.
    const QString& brokenLog() const { return m_brokenLog; }

private:
    FlightMedia();

    QTemporaryDir m_folder;
    QString m_video;
    QString m_log;
    QString m_otherLog;
    QString m_brokenLog;
};

inline const FlightMedia& media()
{
    return FlightMedia::instance();
}

/// The whole main window with the steps that most tests begin with.
class ReviewFixture : public UiFixture
{
public:
    /// Opens the flight's video and waits for its first frame.
    bool openVideo();

    /// Imports a log and waits until it is read and no message of it is left unanswered.
    bool importLog(const QString& path = FlightMedia::instance().log());

    /// Adds a point of interest at the playhead and selects it, as a click on its flag does.
    bool selectPoiAt(int timeMs);

    /// Shows the adjustments and waits for their contents.
    QQuickItem* showAdjustments();

    bool hasVideo() const { return evaluate("videoPlayer.hasVideoOpened").toBool(); }
    QStringList poiNames() const;
};

} // namespace corv::test
