#include "Bench.h"
#include "Project/ProjectFileLoader.h"

#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>

namespace corv::bench {
namespace {

constexpr int poiCount = 10000;

QVariantMap flightProperties()
{
    QVariantList pois;
    for (int i = 0; i < poiCount; ++i)
        pois << QVariantMap{{QStringLiteral("time"), i * 700},
                            {QStringLiteral("name"), QStringLiteral("POI %1").arg(i)},
                            {QStringLiteral("comment"),
                             QStringLiteral("Seen from the north, %1 m above ground").arg(i % 90)}};
    return {{QStringLiteral("properties"), QVariantMap()}, {QStringLiteral("poi"), pois}};
}

const Benchmark project("project", [](Report& report) {
    const QString path = report.inputFolder() + QStringLiteral("/bench.ecor");
    const QVariantMap properties = flightProperties();
    ProjectFileLoader loader;
    const auto ours = [&] {
        loader.saveProject(QStringLiteral("/flight.log"), QStringLiteral("/flight.mp4"), path,
                           properties);
        loader.loadProject(path);
    };
    const auto alone = [&] {
        const QByteArray text =
            QJsonDocument(QJsonObject::fromVariantMap(properties)).toJson(QJsonDocument::Indented);
        QJsonDocument::fromJson(text).object().toVariantMap();
    };
    report.row(QStringLiteral("project: save and load"), timeRatio(ours, alone, 9), 2.0,
               QStringLiteral("10,000 points of interest, against QJsonDocument"));
});

/// A minute's worth of a slow card, of which three seconds are copied before the cancel: what the
/// interface's thread waits for at most, and how soon it goes on after the cancel.
void copying(Report& report)
{
    constexpr qint64 bytesPerSecond = 40'000'000;
    constexpr int copiedMs = 3000;
    const QTemporaryDir folder;
    const QString source = folder.filePath(QStringLiteral("v.mp4"));
    QFile video(source);
    if (!video.open(QIODevice::WriteOnly) || !video.resize(60 * bytesPerSecond))
        return;
    video.close();
    ProjectFileLoader loader;
    loader.setPieceCopied([bytesPerSecond](qint64 bytes) {
        QThread::usleep(static_cast<unsigned long>(bytes * 1'000'000 / bytesPerSecond));
    });
    // The longest time between two turns of the event loop.
    QElapsedTimer turn;
    qint64 longestNs = 0;
    QTimer heartbeat;
    QObject::connect(&heartbeat, &QTimer::timeout, [&] {
        longestNs = std::max(longestNs, turn.nsecsElapsed());
        turn.start();
    });
    QElapsedTimer sinceCancel;
    QTimer::singleShot(copiedMs, &loader, [&] {
        sinceCancel.start();
        loader.cancelCopying();
    });
    turn.start();
    heartbeat.start(0);
    loader.copySourceFilesAndSaveProject(QString(), source,
                                         folder.filePath(QStringLiteral("p.ecor")), {});
    const QString input = QStringLiteral("a source of 40 MB/s");
    report.row(QStringLiteral("longest hold while copying / 50 ms"),
               static_cast<double>(longestNs) / 50e6, 1, input);
    if (sinceCancel.isValid())
        report.row(QStringLiteral("cancel of a copy / 1 s"),
                   static_cast<double>(sinceCancel.elapsed()) / 1000, 1, input);
}

const Benchmark copyBenchmark("copying", copying);

} // namespace
} // namespace corv::bench
