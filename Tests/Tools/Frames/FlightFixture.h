#pragma once

#include "SampleFlight/SampleFlight.h"
#include "Support/ProgramRun.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QTest>

namespace corv::test {

/// A flight of two seconds in two files with its log, and a project of it, for suites of the
/// commands that make pictures to derive from.
class FlightFixture
{
protected:
    /// Writes the flight and its projects: for the `initTestCase` of a suite.
    void writeFlight()
    {
        SampleFlightOptions options;
        options.videoSeconds = 2.0;
        options.secondsPerFile = 1;
        const SampleFlight flight(options);
        QVERIFY(flight.writeCard(m_folder.path()));
        m_video = m_folder.filePath(flight.videoFiles().first());
        m_log = m_folder.filePath(SampleFlight::logFile());
        m_project = path("flight.ecor");
        writeProject(m_project, SampleFlight::logFile());
        writeProject(path("nolog.ecor"), QStringLiteral("gone.log"));
    }

    static ProgramRun run(const QStringList& arguments)
    {
        return runProgram(QStringLiteral(VISTREL_CLI), arguments);
    }

    QString path(const char* name) const { return m_folder.filePath(QString::fromLatin1(name)); }

    QTemporaryDir m_folder;
    QString m_video;
    QString m_log;
    QString m_project; ///< with two points of interest, corrections and the overlay

private:
    void writeProject(const QString& file, const QString& log) const
    {
        const auto poi = [](int timeMs) {
            return QJsonObject{{QStringLiteral("time"), timeMs},
                               {QStringLiteral("name"), QStringLiteral("poi")},
                               {QStringLiteral("comment"), QString()}};
        };
        const QJsonObject properties{
            {QStringLiteral("correction"), QJsonObject{{QStringLiteral("log_offset"), 300}}},
            {QStringLiteral("display"),
             QJsonObject{{QStringLiteral("brightness"), 20.0}, {QStringLiteral("contrast"), 0.8}}},
            {QStringLiteral("thermal_video"), QJsonObject{{QStringLiteral("align_offset_x"), 0.1},
                                                          {QStringLiteral("align_offset_y"), -0.05},
                                                          {QStringLiteral("colormap_auto"), false},
                                                          {QStringLiteral("colormap_min"), 7100.0},
                                                          {QStringLiteral("colormap_max"), 8500.0},
                                                          {QStringLiteral("translucent"), true},
                                                          {QStringLiteral("visible"), true}}}};
        const QJsonObject files{
            {QStringLiteral("video"), QStringLiteral("DCIM/101_CORV/CORV0001.MOV")},
            {QStringLiteral("log"), log}};
        const QJsonObject flight{{QStringLiteral("files"), files},
                                 {QStringLiteral("properties"), properties},
                                 {QStringLiteral("poi"), QJsonArray{poi(100), poi(1200)}}};
        const QJsonObject contents{{QStringLiteral("flights"), QJsonArray{flight}}};
        QFile target(file);
        QVERIFY(target.open(QIODevice::WriteOnly));
        target.write(QJsonDocument(QJsonObject{{QStringLiteral("contents"), contents}}).toJson());
    }
};

} // namespace corv::test
