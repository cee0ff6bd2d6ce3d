#include "Review/ReviewProperties.h"

#include "Log/LogParser.h"
#include "Video/VideoPlayer.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace corv {
namespace {

struct Range
{
    double from;
    double to;
};

// What the controls of the interface allow; their ends are in AdjustmentsTabContents.qml.
constexpr Range contrastRange{0.5, 2.0};
constexpr Range brightnessRange{-50.0, 50.0};
constexpr Range irOffsetXRange{-0.2, 0.2};
constexpr Range irOffsetYRange{-0.16, 0.16};
constexpr Range irMappingRange{0.0, 65535.0};

QVariantMap mapIn(const QVariantMap& map, const char* key)
{
    return map.value(QLatin1String(key)).toMap();
}

bool isNumber(const QVariant& value)
{
    const int type = value.userType();
    return (type == QMetaType::Double || type == QMetaType::LongLong || type == QMetaType::Int) &&
           std::isfinite(value.toDouble());
}

void takeNumber(const QVariantMap& map, const char* key, const Range& range, double& field)
{
    const QVariant value = map.value(QLatin1String(key));
    if (isNumber(value))
        field = std::clamp(value.toDouble(), range.from, range.to);
}

void takeFlag(const QVariantMap& map, const char* key, bool& field)
{
    const QVariant value = map.value(QLatin1String(key));
    if (value.userType() == QMetaType::Bool)
        field = value.toBool();
}

void takeInt(const QVariantMap& map, const char* key, int& field)
{
    const QVariant value = map.value(QLatin1String(key));
    if (isNumber(value) && std::fabs(value.toDouble()) <= std::numeric_limits<int>::max())
        field = static_cast<int>(value.toDouble());
}

// As the file names them, by their number.
constexpr std::array paletteNames{"rainbow", "even", "grey"};

ThermalPalette paletteNamed(const QString& name)
{
    for (size_t i = 0; i < paletteNames.size(); ++i) {
        if (name == QLatin1String(paletteNames[i]))
            return static_cast<ThermalPalette>(i);
    }
    return ThermalPalette::rainbow;
}

QString textIn(const QVariantMap& map, const char* key)
{
    const QVariant value = map.value(QLatin1String(key));
    return value.userType() == QMetaType::QString ? value.toString() : QString();
}

} // namespace

ReviewProperties ReviewProperties::of(const VideoPlayer& player, const LogParser& logParser)
{
    ReviewProperties properties;
    properties.contrast = player.contrast();
    properties.brightness = player.brightness();
    properties.showIR = player.showIR();
    properties.irOverlayTransparent = player.irOverlayTransparent();
    properties.autoIRMapping = player.autoIRMapping();
    properties.irMappingMinValue = player.irMappingMinValue();
    properties.irMappingMaxValue = player.irMappingMaxValue();
    properties.irPalette = static_cast<ThermalPalette>(player.irPalette());
    properties.irOffsetX = player.irOffsetX();
    properties.irOffsetY = player.irOffsetY();
    properties.manualLogTimeOffset = logParser.getManualLogTimeOffset();
    const QVariantMap naming = logParser.flightNaming();
    properties.hasNaming = !naming.value(QStringLiteral("undefined")).toBool();
    if (properties.hasNaming) {
        properties.missionName = naming.value(QStringLiteral("missionName")).toString();
        properties.flightName = naming.value(QStringLiteral("flightName")).toString();
        properties.flightNumber = naming.value(QStringLiteral("flightNumber")).toInt();
    }
    return properties;
}

ReviewProperties ReviewProperties::fromJson(const QVariantMap& properties,
                                            const ReviewProperties& otherwise)
{
    ReviewProperties read = otherwise;
    const QVariantMap display = mapIn(properties, "display");
    takeNumber(display, "contrast", contrastRange, read.contrast);
    takeNumber(display, "brightness", brightnessRange, read.brightness);
    const QVariantMap thermal = mapIn(properties, "thermal_video");
    takeNumber(thermal, "align_offset_x", irOffsetXRange, read.irOffsetX);
    takeNumber(thermal, "align_offset_y", irOffsetYRange, read.irOffsetY);
    takeNumber(thermal, "colormap_min", irMappingRange, read.irMappingMinValue);
    takeNumber(thermal, "colormap_max", irMappingRange, read.irMappingMaxValue);
    takeFlag(thermal, "translucent", read.irOverlayTransparent);
    takeFlag(thermal, "colormap_auto", read.autoIRMapping);
    takeFlag(thermal, "visible", read.showIR);
    read.irPalette = paletteNamed(textIn(thermal, "palette"));
    takeInt(mapIn(properties, "correction"), "log_offset", read.manualLogTimeOffset);

    const QVariantMap designation = mapIn(properties, "designation");
    read.hasNaming = !designation.isEmpty();
    read.missionName = textIn(designation, "mission_name");
    read.flightName = textIn(designation, "flight_name");
    read.flightNumber = 0;
    takeInt(designation, "flight_number", read.flightNumber);
    return read;
}

QVariantMap ReviewProperties::toJson() const
{
    QVariantMap thermal{{QStringLiteral("visible"), showIR},
                        {QStringLiteral("translucent"), irOverlayTransparent},
                        {QStringLiteral("colormap_auto"), autoIRMapping},
                        {QStringLiteral("colormap_min"), irMappingMinValue},
                        {QStringLiteral("colormap_max"), irMappingMaxValue},
                        {QStringLiteral("align_offset_x"), irOffsetX},
                        {QStringLiteral("align_offset_y"), irOffsetY}};
    if (irPalette != ThermalPalette::rainbow)
        thermal.insert(
            QStringLiteral("palette"),
            QLatin1String(paletteNames[static_cast<size_t>(irPalette) % paletteNames.size()]));
    QVariantMap json{
        {QStringLiteral("display"), QVariantMap{{QStringLiteral("contrast"), contrast},
                                                {QStringLiteral("brightness"), brightness}}},
        {QStringLiteral("thermal_video"), thermal},
        {QStringLiteral("correction"),
         QVariantMap{{QStringLiteral("log_offset"), manualLogTimeOffset}}}};
    if (!hasNaming)
        return json;
    QVariantMap designation{{QStringLiteral("mission_name"), missionName},
                            {QStringLiteral("flight_name"), flightName}};
    if (flightNumber > 0)
        designation.insert(QStringLiteral("flight_number"), flightNumber);
    json.insert(QStringLiteral("designation"), designation);
    return json;
}

QVariantMap ReviewProperties::naming() const
{
    if (!hasNaming)
        return {{QStringLiteral("undefined"), true}};
    return {{QStringLiteral("undefined"), false},
            {QStringLiteral("missionName"), missionName},
            {QStringLiteral("flightName"), flightName},
            {QStringLiteral("flightNumber"), flightNumber}};
}

void ReviewProperties::applyTo(VideoPlayer& player) const
{
    player.setContrast(contrast);
    player.setBrightness(brightness);
    player.setIrPalette(static_cast<int>(irPalette));
    player.setIrOffsetX(irOffsetX);
    player.setIrOffsetY(irOffsetY);
    player.setIrOverlayTransparent(irOverlayTransparent);
    player.setIrMappingMinValue(irMappingMinValue);
    player.setIrMappingMaxValue(irMappingMaxValue);
    player.setAutoIRMapping(autoIRMapping);
    player.setShowIR(showIR);
}

std::optional<QStringList> curvesIn(const QVariantMap& properties)
{
    constexpr int mostCurves = 100;
    const QVariant stored = mapIn(properties, "log_curves").value(QStringLiteral("shown"));
    if (stored.userType() != QMetaType::QVariantList)
        return std::nullopt;
    QStringList curves;
    for (const QVariant& name : stored.toList().mid(0, mostCurves)) {
        if (name.userType() == QMetaType::QString)
            curves << name.toString();
    }
    curves.removeDuplicates();
    return curves;
}

void putCurves(const QStringList& curves, QVariantMap* properties)
{
    if (!curves.isEmpty())
        properties->insert(
            QStringLiteral("log_curves"),
            QVariantMap{{QStringLiteral("shown"),
                         QVariant::fromValue(QVariantList(curves.begin(), curves.end()))}});
}

} // namespace corv
