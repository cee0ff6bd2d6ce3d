#pragma once

#include "Video/VideoDisplaySettings.h"

#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <optional>

namespace corv {

class LogParser;
class VideoPlayer;

/// What a project keeps of a review besides its files and points of interest: the adjustments and
/// the flight's names. Default-made, it is what a flight starts with. A plain value.
struct ReviewProperties
{
    double contrast = 1.0;
    double brightness = 0.0;
    bool showIR = false;
    bool irOverlayTransparent = false;
    bool autoIRMapping = true;
    double irMappingMinValue = 0.0;
    double irMappingMaxValue = 16383.0;
    ThermalPalette irPalette = ThermalPalette::rainbow;
    double irOffsetX = 0.0;
    double irOffsetY = 0.0;
    int manualLogTimeOffset = 0; ///< milliseconds

    /// The flight has names. `flightNumber` is 0 for a flight without a number.
    bool hasNaming = false;
    QString missionName;
    QString flightName;
    int flightNumber = 0;

    /// As the player and the parser are now.
    static ReviewProperties of(const VideoPlayer& player, const LogParser& logParser);

    /// From the "properties" of a project file. What is missing there or of another type is as in
    /// `otherwise`; numbers beyond what the interface's controls allow are brought to their limits,
    /// except for the time shift, which any int can be. The names and the palette come from the
    /// file alone.
    static ReviewProperties fromJson(const QVariantMap& properties,
                                     const ReviewProperties& otherwise);

    /// The "properties" of a project file, with the names and the number only where there are any.
    QVariantMap toJson() const;

    /// The map form of `LogParser::flightNaming`.
    QVariantMap naming() const;

    /// Hands everything but the time shift and the names to the player.
    void applyTo(VideoPlayer& player) const;
};

/// The curves of the log that "properties" keep, by name; none of an old project, which leaves the
/// choice as it is.
std::optional<QStringList> curvesIn(const QVariantMap& properties);

/// Writes the names of the curves into `properties`.
void putCurves(const QStringList& curves, QVariantMap* properties);

} // namespace corv
