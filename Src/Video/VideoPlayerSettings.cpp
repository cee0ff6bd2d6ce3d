#include "Video/VideoPlayer.h"

#include "Base/arithmetic.h"
#include "Base/videoTime.h"
#include "Video/OpenCvWorker.h"
#include "Video/ThermalReading.h"

#include <QtNumeric>
#include <cmath>
#include <optional>

// The settings of the picture, and the redrawing that follows from them.
namespace corv {

void VideoPlayer::setShowIR(bool showIR)
{
    if (m_settings.showIR == showIR)
        return;
    m_settings.showIR = showIR;
    sendSettings();
    emit showIRChanged();
    redraw();
}

void VideoPlayer::setContrast(double contrast)
{
    if (!(std::abs(m_settings.contrast - contrast) > settingTolerance))
        return;
    m_settings.contrast = contrast;
    sendSettings();
    redraw();
    emit contrastChanged();
}

void VideoPlayer::setBrightness(double brightness)
{
    if (!(std::abs(m_settings.brightness - brightness) > settingTolerance))
        return;
    m_settings.brightness = brightness;
    sendSettings();
    redraw();
    emit brightnessChanged();
}

void VideoPlayer::setAutoIRMapping(bool autoIRMapping)
{
    if (m_settings.autoIRMapping == autoIRMapping)
        return;
    m_settings.autoIRMapping = autoIRMapping;
    sendSettings();
    emit autoIRMappingChanged();
}

void VideoPlayer::setIrMappingMinValue(double value)
{
    setOverlayValue(m_settings.irMappingMinValue, value, &VideoPlayer::irMappingMinValueChanged);
}

void VideoPlayer::setIrMappingMaxValue(double value)
{
    setOverlayValue(m_settings.irMappingMaxValue, value, &VideoPlayer::irMappingMaxValueChanged);
}

void VideoPlayer::setIrOffsetX(double offset)
{
    setOverlayValue(m_settings.irOffsetX, offset, &VideoPlayer::irOffsetXChanged);
}

void VideoPlayer::setIrOffsetY(double offset)
{
    setOverlayValue(m_settings.irOffsetY, offset, &VideoPlayer::irOffsetYChanged);
}

void VideoPlayer::setFullScreenIR(bool fullScreenIR)
{
    setOverlayFlag(m_settings.fullScreenIR, fullScreenIR, &VideoPlayer::fullScreenIRChanged);
}

void VideoPlayer::setIrOverlayTransparent(bool transparent)
{
    setOverlayFlag(m_settings.irOverlayTransparent, transparent,
                   &VideoPlayer::irOverlayTransparentChanged);
}

void VideoPlayer::setOverlayValue(double& field, double value, Notify changed)
{
    if (!(std::abs(field - value) > settingTolerance))
        return;
    field = value;
    sendSettings();
    if (showIR())
        redraw();
    emit(this->*changed)();
}

void VideoPlayer::setOverlayFlag(bool& field, bool value, Notify changed)
{
    if (field == value)
        return;
    field = value;
    sendSettings();
    if (showIR())
        redraw();
    emit(this->*changed)();
}

void VideoPlayer::setThermalAsOnScreen(bool asOnScreen)
{
    if (m_settings.thermalAsOnScreen == asOnScreen)
        return;
    m_settings.thermalAsOnScreen = asOnScreen;
    sendSettings();
    emit thermalAsOnScreenChanged();
}

bool VideoPlayer::drawsOverlay() const
{
    return showIR() && m_thermalStatus.ok() && m_logParser && m_logParser->isSynced();
}

bool VideoPlayer::savesOtherThermal(QTime time) const
{
    return drawsOverlay() && !thermalAsOnScreen() && m_secondFileMs >= 0 &&
           msOfTime(time) >= m_secondFileMs;
}

void VideoPlayer::setIrPalette(int palette)
{
    if (palette == irPalette() || palette < 0 || palette > static_cast<int>(ThermalPalette::grey))
        return;
    m_settings.irPalette = static_cast<ThermalPalette>(palette);
    sendSettings();
    if (showIR())
        redraw();
    emit irPaletteChanged();
}

double VideoPlayer::thermalValueAt(double x, double y) const
{
    const auto value = m_thermal ? m_thermal->valueAt({x, y}) : std::nullopt;
    return value ? *value : qQNaN();
}

QVariantMap VideoPlayer::thermalExtremes() const
{
    if (!m_thermal)
        return {};
    const auto map = [](const ThermalReading::Point& point) {
        return QVariantMap{{QStringLiteral("value"), point.value},
                           {QStringLiteral("x"), point.place.x()},
                           {QStringLiteral("y"), point.place.y()}};
    };
    return {{QStringLiteral("coldest"), map(m_thermal->coldest())},
            {QStringLiteral("hottest"), map(m_thermal->hottest())}};
}

std::optional<ThermalScale> VideoPlayer::thermalScale() const
{
    if (!m_thermal)
        return std::nullopt;
    return m_thermal->scale();
}

void VideoPlayer::sendSettings()
{
    m_settings.irDataMin = irDataMin();
    m_settings.irDataMax = irDataMax();
    toWorker([settings = m_settings](OpenCvWorker& worker) { worker.setSettings(settings); });
}

void VideoPlayer::setPlaySpeed(double playSpeed)
{
    if (!(playSpeed >= 1.0) || !(std::abs(playSpeed - m_playSpeed) > settingTolerance))
        return;
    const int wholeSpeed = truncateToInt(playSpeed);
    if (wholeSpeed == m_playSpeed)
        return;
    m_playSpeed = wholeSpeed;
    m_clock.reset();
    emit playSpeedChanged();
}

} // namespace corv
