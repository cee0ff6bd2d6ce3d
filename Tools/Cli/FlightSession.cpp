#include "Cli/FlightSession.h"

#include "Base/sameFile.h"
#include "Base/videoTime.h"
#include "Cli/Command.h"
#include "Cli/diagnostics.h"
#include "Project/ProjectFileLoader.h"
#include "Timeline/logPois.h"
#include "Video/fileNames.h"

#include <QEventLoop>
#include <QFileInfo>
#include <QMap>
#include <algorithm>
#include <cmath>
#include <limits>

namespace corv::cli {
namespace {

QVariantMap mapIn(const QVariantMap& map, const char* key)
{
    return map.value(QLatin1String(key)).toMap();
}

/// Hands a number of the project on to `store`; what is no number leaves the default.
template <typename Store>
void restore(const QVariantMap& map, const char* key, Store store)
{
    // Whole numbers of a JSON text come as integers.
    const QVariant value = map.value(QLatin1String(key));
    const bool isNumber = value.type() == QVariant::Double || value.type() == QVariant::LongLong;
    if (isNumber && std::isfinite(value.toDouble()))
        store(value.toDouble());
}

template <typename Store>
void restoreFlag(const QVariantMap& map, const char* key, Store store)
{
    const QVariant value = map.value(QLatin1String(key));
    if (value.type() == QVariant::Bool)
        store(value.toBool());
}

bool isProject(const QString& file)
{
    return file.endsWith(QLatin1String(".ecor"), Qt::CaseInsensitive);
}

QVariantMap namingOf(const QVariantMap& properties)
{
    const QVariantMap designation = mapIn(properties, "designation");
    if (designation.isEmpty())
        return {{QStringLiteral("undefined"), true}};
    return {{QStringLiteral("undefined"), false},
            {QStringLiteral("missionName"), designation.value(QStringLiteral("mission_name"))},
            {QStringLiteral("flightName"), designation.value(QStringLiteral("flight_name"))},
            {QStringLiteral("flightNumber"), designation.value(QStringLiteral("flight_number"))}};
}

} // namespace

FlightSession::FlightSession()
{
    // What the main window starts with.
    m_player.setAutoIRMapping(true);
    m_player.setIrMappingMinValue(0);
    m_player.setIrMappingMaxValue(16383);
    m_player.setLogParser(&m_logParser);
}

bool FlightSession::isFlight(const QStringList& files)
{
    const bool hasOption = std::any_of(files.begin(), files.end(), [](const QString& file) {
        return file.startsWith(QLatin1String("--"));
    });
    if (hasOption || files.isEmpty())
        return false;
    return files.size() == 1 || (files.size() == 2 && !isProject(files[0]));
}

QString FlightSession::open(const QStringList& files, const QString& target)
{
    const QString error = openFiles(files);
    if (error.isEmpty() && isOneOfFiles(target, m_files + files))
        return target + QStringLiteral(": is a file of the flight itself");
    return error;
}

QString FlightSession::openFiles(const QStringList& files)
{
    if (files.size() == 1 && isProject(files[0]))
        return openProject(files[0]);
    const QString error = openVideo(files.value(0));
    return error.isEmpty() && files.size() > 1 ? openLog(files[1], false) : error;
}

QVariantList FlightSession::marks() const
{
    const QString timeKey = QStringLiteral("time");
    const int durationMs = msOfTime(m_player.duration());
    QMap<int, QVariantMap> marksByTime;
    for (const QVariant& entry : m_projectMarks) {
        const QVariantMap mark = entry.toMap();
        if (mark.contains(timeKey)) {
            const int timeMs = msOfTime(timeOfMs(mark[timeKey].toInt()));
            marksByTime[timeMs] = {{timeKey, timeMs},
                                   {QStringLiteral("name"), mark[QStringLiteral("name")]},
                                   {QStringLiteral("comment"), mark[QStringLiteral("comment")]}};
        }
    }
    int number = 0;
    for (const int timeMs : logPoiTimesMs(m_logParser)) {
        ++number;
        if (timeMs >= 0 && timeMs < durationMs && !marksByTime.contains(timeMs))
            marksByTime[timeMs] = {{timeKey, timeMs},
                                   {QStringLiteral("name"), QStringLiteral("POI %1").arg(number)},
                                   {QStringLiteral("comment"), QString()}};
    }
    QVariantList list;
    for (const QVariantMap& mark : marksByTime)
        list << mark;
    return list;
}

QString FlightSession::openProject(const QString& projectFile)
{
    const QVariantMap project = ProjectFileLoader().loadProject(projectFile);
    const auto text = [&project](const char* key) {
        return project.value(QLatin1String(key)).toString();
    };
    if (!project.value(QStringLiteral("loaded")).toBool())
        return projectFile + QStringLiteral(": cannot be opened");
    if (!project.value(QStringLiteral("videoFileExists")).toBool())
        return projectFile + QStringLiteral(": its video is not at ") + text("videoFile");
    const QString error = openVideo(text("videoFile"));
    if (!error.isEmpty())
        return error;
    const QVariantMap properties = mapIn(project, "properties");
    m_projectMarks = project.value(QStringLiteral("poi")).toList();
    m_logParser.setFlightNaming(namingOf(properties));
    restoreSettings(properties);
    // A project whose log has gone would give pictures without their overlay, and no one is there
    // to see a warning.
    if (!project.value(QStringLiteral("logFileExists")).toBool())
        return projectFile + QStringLiteral(": its log is not at ") + text("logFile");
    return openLog(text("logFile"), true);
}

QString FlightSession::openVideo(const QString& videoFile)
{
    if (!QFileInfo(videoFile).isFile())
        return videoFile + QStringLiteral(": no such file");
    QString failedFile;
    QEventLoop loop;
    QObject::connect(&m_player, &VideoPlayer::sourceOpenError, &loop, [&](const QString& file) {
        failedFile = file;
        loop.quit();
    });
    QObject::connect(&m_player, &VideoPlayer::durationChanged, &loop, &QEventLoop::quit);
    m_files << expandVideoSequence(videoFile);
    m_player.setSource(videoFile);
    if (failedFile.isEmpty())
        loop.exec();
    if (!failedFile.isEmpty())
        return failedFile + QStringLiteral(": the video cannot be opened");
    m_logParser.setDuration(m_player.duration());
    return {};
}

QString FlightSession::openLog(const QString& logFile, bool ignoreNaming)
{
    QEventLoop loop;
    bool isParsed = false;
    QObject::connect(&m_logParser, &LogParser::logParsingComplete, &loop, [&](bool result) {
        isParsed = result;
        loop.quit();
    });
    m_files << logFile;
    m_logParser.parseLog(logFile, ignoreNaming);
    loop.exec();
    if (!isParsed)
        return logFile + QStringLiteral(": ") + lastErrorOr(QStringLiteral("cannot be decoded"));
    QObject::connect(&m_player, &VideoPlayer::thermalStatusChanged, &loop, &QEventLoop::quit);
    m_player.updateLogData();
    loop.exec();
    return {};
}

void FlightSession::restoreSettings(const QVariantMap& properties)
{
    const QVariantMap display = mapIn(properties, "display");
    const QVariantMap thermal = mapIn(properties, "thermal_video");
    const auto number = [this](void (VideoPlayer::*setter)(double)) {
        return [this, setter](double value) { (m_player.*setter)(value); };
    };
    const auto flag = [this](void (VideoPlayer::*setter)(bool)) {
        return [this, setter](bool value) { (m_player.*setter)(value); };
    };
    restore(display, "contrast", number(&VideoPlayer::setContrast));
    restore(display, "brightness", number(&VideoPlayer::setBrightness));
    restore(thermal, "align_offset_x", number(&VideoPlayer::setIrOffsetX));
    restore(thermal, "align_offset_y", number(&VideoPlayer::setIrOffsetY));
    restoreFlag(thermal, "translucent", flag(&VideoPlayer::setIrOverlayTransparent));
    restore(thermal, "colormap_min", number(&VideoPlayer::setIrMappingMinValue));
    restore(thermal, "colormap_max", number(&VideoPlayer::setIrMappingMaxValue));
    restoreFlag(thermal, "colormap_auto", flag(&VideoPlayer::setAutoIRMapping));
    restoreFlag(thermal, "visible", flag(&VideoPlayer::setShowIR));
    restore(mapIn(properties, "correction"), "log_offset", [this](double offsetMs) {
        if (std::fabs(offsetMs) <= std::numeric_limits<int>::max())
            m_logParser.setManualLogTimeOffset(static_cast<int>(offsetMs));
    });
}

QCommandLineOption thermalClockOption()
{
    QCommandLineOption option =
        valued(QStringLiteral("thermal-clock"), QStringLiteral("file|screen"),
               QStringLiteral("the moment of a picture's thermal picture: the time in its file, or "
                              "the one on screen"));
    option.setDefaultValue(QStringLiteral("file"));
    return option;
}

bool takeThermalClock(const QCommandLineParser& line, VideoPlayer& player)
{
    const QString clock = line.value(QStringLiteral("thermal-clock"));
    player.setThermalAsOnScreen(clock == QLatin1String("screen"));
    return clock == QLatin1String("screen") || clock == QLatin1String("file");
}

} // namespace corv::cli
