#pragma once

#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace corv::test {

/// The first flight of a project file, as it is on disk; empty if there is none.
inline QJsonObject savedFlight(const QString& project)
{
    QFile file(project);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject contents =
        QJsonDocument::fromJson(file.readAll()).object()["contents"].toObject();
    return contents["flights"].toArray().at(0).toObject();
}

/// The files that the flight names.
inline QJsonObject filesIn(const QString& project)
{
    return savedFlight(project)["files"].toObject();
}

} // namespace corv::test
