#pragma once

#include "timelineSupport.h"

namespace corv::test {

/// What the strip is painted on.
const QColor ground(169, 169, 169);

/// A minute of video on an item 720 pixels wide, at first at 100 ms per pixel, all of it in view.
/// Whatever it signals is noted, in order.
struct Strip
{
    explicit Strip(int contentWidth = 720)
    {
        timeline.setVideoPlayer(&player);
        timeline.setSize(QSizeF(720, 160));
        timeline.setContentWidth(contentWidth);
        const auto note = [this](const QString& text) { return [this, text] { notes << text; }; };
        QObject::connect(&timeline, &TimelineContent::durationChanged, note("duration"));
        QObject::connect(&timeline, &TimelineContent::contentWidthChanged, note("contentWidth"));
        QObject::connect(&timeline, &TimelineContent::contentXChanged, [this] {
            notes << QStringLiteral("contentX %1").arg(timeline.contentX());
        });
        QObject::connect(&timeline, &TimelineContent::cursorPositionChanged, [this] {
            notes << QStringLiteral("cursor %1").arg(msOfTime(timeline.cursorPosition()));
        });
        QObject::connect(&timeline, &TimelineContent::msPerPxChanged, note("msPerPx"));
        QObject::connect(&timeline, &TimelineContent::seekRequest, [this](QTime time) {
            notes << QStringLiteral("seek %1").arg(msOfTime(time));
        });
        QObject::connect(&timeline, &TimelineContent::selectedPoiTimeChanged, [this] {
            const QTime selected = timeline.selectedPoiTime();
            notes << (selected.isValid() ? QStringLiteral("select %1").arg(msOfTime(selected))
                                         : QStringLiteral("select none"));
        });
        QObject::connect(&timeline, &TimelineContent::movePOIModeChanged, note("moveMode"));
        QObject::connect(&timeline, &TimelineContent::poiDoubleClicked, [this](QTime time) {
            notes << QStringLiteral("doubleClicked %1").arg(msOfTime(time));
        });
        QObject::connect(&timeline, &TimelineContent::clicked, note("clicked"));
    }

    /// What was noted since the last call.
    QStringList taken() { return std::exchange(notes, {}); }

    /// Each gives whether the event was accepted; `accepted` is what the event says before.
    bool mouse(QEvent::Type type, int x, int y)
    {
        QMouseEvent event(type, QPointF(x, y), Qt::LeftButton, Qt::LeftButton, Qt::NoModifier);
        QCoreApplication::sendEvent(&timeline, &event);
        return event.isAccepted();
    }
    bool press(int x, int y) { return mouse(QEvent::MouseButtonPress, x, y); }
    bool release(int x, int y) { return mouse(QEvent::MouseButtonRelease, x, y); }
    bool move(int x, int y) { return mouse(QEvent::MouseMove, x, y); }
    bool doubleClick(int x, int y) { return mouse(QEvent::MouseButtonDblClick, x, y); }

    bool hover(int x, int y, QEvent::Type type = QEvent::HoverMove, bool accepted = true)
    {
        QHoverEvent event(type, QPointF(x, y), QPointF());
        event.setAccepted(accepted);
        QCoreApplication::sendEvent(&timeline, &event);
        return event.isAccepted();
    }

    void wheel(const QPoint& delta, Qt::KeyboardModifiers modifiers, int x = 0)
    {
        QWheelEvent event(QPointF(x, 60), QPointF(x, 60), QPoint(), delta, Qt::NoButton, modifiers,
                          Qt::NoScrollPhase, false);
        QCoreApplication::sendEvent(&timeline, &event);
    }

    /// Selects the point of interest at `ms` with the pointer, as the user does.
    void select(int ms)
    {
        painted(timeline);
        hover(ms / 100, 60);
        press(ms / 100, 60);
    }

    /// Points of interest with thumbnails of one colour, 60 pixels wide.
    void addPois(const QList<int>& timesMs, const QColor& colour = Qt::green)
    {
        QVariantList list;
        for (const int ms : timesMs)
            list.append(QVariantMap{{QStringLiteral("time"), ms}});
        timeline.setPOIsFromList(list);
        player.answerAll(frameOf(colour, QSize(120, 120)));
        deliver();
        painted(timeline);
    }

    /// The colour where the thumbnail of the point of interest at `ms` is painted, if it has one.
    QColor thumbnailColour(int ms) { return painted(timeline).pixelColor(ms / 100 + 20, 70); }

    FramePlayer player;
    TimelineContent timeline;
    QStringList notes;
};

} // namespace corv::test
