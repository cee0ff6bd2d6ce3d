#include "Bench.h"
#include "Project/ProjectFileLoader.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace corv::bench {
namespace {

constexpr int markCount = 10000;

QVariantMap flightProperties()
{
    QVariantList marks;
    for (int i = 0; i < markCount; ++i)
        marks << QVariantMap{
            {QStringLiteral("time"), i * 700},
            {QStringLiteral("name"), QStringLiteral("Mark %1").arg(i)},
            {QStringLiteral("comment"),
             QStringLiteral("Seen from the north, %1 m above ground").arg(i % 90)}};
    return {{QStringLiteral("properties"), QVariantMap()}, {QStringLiteral("poi"), marks}};
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
               QStringLiteral("10,000 marks, against QJsonDocument"));
});

} // namespace
} // namespace corv::bench
