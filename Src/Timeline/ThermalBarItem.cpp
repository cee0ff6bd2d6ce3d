#include "Timeline/ThermalBarItem.h"

#include "Timeline/thermalBarPainting.h"

namespace corv {

ThermalBarItem::ThermalBarItem(QQuickItem* parent) : QQuickPaintedItem(parent)
{
    setImplicitWidth(thermalBarWidth);
}

void ThermalBarItem::setPlayer(VideoPlayer* player)
{
    if (m_player == player)
        return;
    if (m_player)
        disconnect(m_player, nullptr, this, nullptr);
    m_player = player;
    if (player)
        connect(player, &VideoPlayer::thermalReadingChanged, this, &ThermalBarItem::readScale);
    readScale();
    emit playerChanged();
}

QString ThermalBarItem::lowestText() const
{
    return m_shown ? thermalBarText(m_shown->lowest) : QString();
}

QString ThermalBarItem::highestText() const
{
    return m_shown ? thermalBarText(m_shown->highest) : QString();
}

void ThermalBarItem::readScale()
{
    const std::optional<ThermalScale> scale = m_player ? m_player->thermalScale() : std::nullopt;
    if (scale == m_shown)
        return;
    m_shown = scale;
    update();
    emit scaleChanged();
}

void ThermalBarItem::paint(QPainter* painter)
{
    if (m_shown)
        paintThermalBar(*painter, boundingRect(), 1.0, *m_shown);
}

} // namespace corv
