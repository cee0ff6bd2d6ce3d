#include "Cli/Command.h"
#include "Project/ProjectFileLoader.h"

#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

namespace corv::cli {
namespace {

QJsonObject fileEntry(const QString& path)
{
    const QFileInfo file(path);
    QJsonObject entry{{QStringLiteral("path"), path}, {QStringLiteral("exists"), file.isFile()}};
    if (file.isFile())
        entry.insert(QStringLiteral("size"), file.size());
    return entry;
}

QJsonObject json(const QString& path, const ProjectContents& project)
{
    QJsonArray parts;
    for (const QString& part : project.parts)
        parts.append(fileEntry(part));
    QJsonObject object{
        {QStringLiteral("project"), path},
        {QStringLiteral("video"), fileEntry(project.videoFile)},
        {QStringLiteral("parts"), parts},
        {QStringLiteral("missing"), QJsonArray::fromStringList(project.missingFiles())},
        {QStringLiteral("properties"), QJsonObject::fromVariantMap(project.properties)},
        {QStringLiteral("poi"),
         QJsonArray::fromVariantList(project.pois.value_or(QVariantList()))}};
    object.insert(QStringLiteral("log"), project.namesLog ? QJsonValue(fileEntry(project.logFile))
                                                          : QJsonValue(QJsonValue::Null));
    return object;
}

// A name may hold anything; a line of the listing ends at a line feed.
QString oneLine(const QVariant& text)
{
    return text.toString().simplified();
}

QString fileLine(const QString& what, const QString& path)
{
    return QStringLiteral("%1: %2%3\n")
        .arg(what, path, QFileInfo(path).isFile() ? QString() : QStringLiteral(" (missing)"));
}

QString text(const ProjectContents& project)
{
    QString lines = fileLine(QStringLiteral("video"), project.videoFile);
    for (const QString& part : project.parts.mid(1))
        lines += fileLine(QStringLiteral("video, continued"), part);
    lines += project.namesLog ? fileLine(QStringLiteral("log"), project.logFile)
                              : QStringLiteral("log: none\n");
    const QVariantMap names = project.properties.value(QStringLiteral("designation")).toMap();
    if (!names.isEmpty())
        lines += QStringLiteral("flight: %1, %2 %3\n")
                     .arg(oneLine(names.value(QStringLiteral("mission_name"))),
                          oneLine(names.value(QStringLiteral("flight_name"))),
                          oneLine(names.value(QStringLiteral("flight_number"))));
    const QVariantList pois = project.pois.value_or(QVariantList());
    lines += QStringLiteral("points of interest: %1\n").arg(pois.size());
    for (const QVariant& entry : pois) {
        const QVariantMap poi = entry.toMap();
        lines += QStringLiteral("%1 ms: %2\n")
                     .arg(poi.value(QStringLiteral("time")).toInt())
                     .arg(oneLine(poi.value(QStringLiteral("name"))));
    }
    return lines;
}

ExitStatus project(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    if (arguments.size() != 1)
        return WrongUsage;
    const bool asJson = line.isSet(QStringLiteral("json"));
    ProjectFileLoader loader;
    loader.loadProject(arguments[0]);
    const ProjectContents& contents = loader.contents();
    if (!contents.namesVideo)
        return fail(*loader.loadProblem());
    return writeOut(asJson ? QJsonDocument(json(arguments[0], contents)).toJson()
                           : text(contents).toUtf8());
}

} // namespace

std::vector<Command> projectCommands()
{
    return {{QStringLiteral("project"),
             QStringLiteral("FILE [--json]"),
             QStringLiteral("what a project holds, and what of it is missing"),
             {flag(QStringLiteral("json"), QStringLiteral("writes JSON"))},
             project}};
}

} // namespace corv::cli
