#pragma once

#include "Timeline/TimelineContent.h"

#include <QImage>
#include <QObject>
#include <QPointer>
#include <QVariantList>

namespace corv {

/// What keys do with a timeline: jumps, the points of interest one after the other, zoom. Each does
/// nothing without a timeline. Interface thread only.
class TimelineNavigator : public QObject
{
    Q_OBJECT
    Q_PROPERTY(corv::TimelineContent* timeline READ timeline WRITE setTimeline)

public:
    using QObject::QObject;

    TimelineContent* timeline() const { return m_timeline; }
    void setTimeline(TimelineContent* timeline) { m_timeline = timeline; }

    /// Asks for the time `ms` after the playback cursor, within the video.
    Q_INVOKABLE void jump(int ms);

    /// Goes to the point of interest after the cursor, or before it, as below; nothing at the last,
    /// or the first.
    Q_INVOKABLE void selectNextPoi();
    Q_INVOKABLE void selectPreviousPoi();

    /// Selects the point of interest at `time` and goes there. While one is being moved, that one
    /// stays selected.
    Q_INVOKABLE void goToPoi(QTime time);

    /// One step; the cursor keeps its place in the view, if it is in view, and else the middle.
    Q_INVOKABLE void zoomIn() { zoom(true); }
    Q_INVOKABLE void zoomOut() { zoom(false); }

    /// The time at an item x, within the video, and as minutes, seconds and milliseconds.
    Q_INVOKABLE QTime timeAt(double x) const;
    Q_INVOKABLE QString timeTextAt(double x) const;

    /// The points of interest whose flags are at a place of the item, in ascending time: maps of
    /// "time" (QTime), "timeText" and "name".
    Q_INVOKABLE QVariantList poisAt(double x, double y) const;

    /// The thumbnail of the point of interest at `time`, null until it is there. One that was not
    /// fetched yet, as nobody saw it, is fetched now; the model says when it has changed.
    Q_INVOKABLE QImage pictureAt(QTime time) const;

    /// Whether two such lists are of the same points.
    Q_INVOKABLE bool samePois(const QVariantList& one, const QVariantList& other) const;

    /// The whole video in view.
    Q_INVOKABLE void zoomToFit();

    /// The selected point of interest in the middle of ten seconds; else the cursor.
    Q_INVOKABLE void zoomToSelection();

private:
    void zoom(bool in);
    void zoomTo(int contentWidth, int ms, int x);

    QPointer<TimelineContent> m_timeline;
};

} // namespace corv
