#pragma once

#include "Video/VideoPlayer.h"

#include <QPointer>
#include <QQuickPaintedItem>
#include <optional>

namespace corv {

/// The colours of the thermal overlay on screen, with the raw values at the ends of their range.
/// Paints nothing without an overlay. The player is not owned. Interface thread only.
class ThermalBarItem : public QQuickPaintedItem
{
    Q_OBJECT
    Q_PROPERTY(corv::VideoPlayer* player READ player WRITE setPlayer NOTIFY playerChanged)
    Q_PROPERTY(bool hasScale READ hasScale NOTIFY scaleChanged)
    Q_PROPERTY(QString lowestText READ lowestText NOTIFY scaleChanged)
    Q_PROPERTY(QString highestText READ highestText NOTIFY scaleChanged)

public:
    explicit ThermalBarItem(QQuickItem* parent = nullptr);

    VideoPlayer* player() const { return m_player; }
    void setPlayer(VideoPlayer* player);

    /// Whether there is an overlay on screen; empty texts without one.
    bool hasScale() const { return m_shown.has_value(); }
    QString lowestText() const;
    QString highestText() const;

    void paint(QPainter* painter) override;

signals:
    void playerChanged();
    void scaleChanged();

private:
    void readScale();

    QPointer<VideoPlayer> m_player;
    std::optional<ThermalScale> m_shown;
};

} // namespace corv
