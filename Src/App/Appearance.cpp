#include "App/Appearance.h"

#include "App/look.h"

#include <QSettings>

namespace corv {
namespace {

const QString settingsKey = QStringLiteral("userPreferences/lightTheme");

} // namespace

Appearance::Appearance(QObject* parent)
    : QObject(parent), m_light(QSettings().value(settingsKey, false).toBool())
{
    useDialogColours(m_light);
}

void Appearance::setLight(bool light)
{
    if (light == m_light)
        return;
    m_light = light;
    QSettings().setValue(settingsKey, light);
    useDialogColours(light);
    emit lightChanged();
}

} // namespace corv
