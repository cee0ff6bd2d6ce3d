#include "Cli/Command.h"
#include "Cli/folders.h"
#include "Log/printable.h"
#include "Project/ProjectFileLoader.h"
#include "Project/mediaSearch.h"

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
    QJsonArray pois;
    for (const QVariant& entry : project.pois.value_or(QVariantList())) {
        QJsonObject poi = QJsonObject::fromVariantMap(entry.toMap());
        poi.insert(QStringLiteral("timeMs"), poi.take(QStringLiteral("time")));
        pois.append(poi);
    }
    QJsonObject object{
        {QStringLiteral("project"), path},
        {QStringLiteral("video"), fileEntry(project.videoFile)},
        {QStringLiteral("parts"), parts},
        {QStringLiteral("missing"), QJsonArray::fromStringList(project.missingFiles())},
        {QStringLiteral("properties"), QJsonObject::fromVariantMap(project.properties)},
        {QStringLiteral("poi"), pois}};
    object.insert(QStringLiteral("log"), project.namesLog ? QJsonValue(fileEntry(project.logFile))
                                                          : QJsonValue(QJsonValue::Null));
    return object;
}

// A name may hold anything; a line of the listing ends at a line feed.
QString oneLine(const QVariant& text)
{
    return printable(text.toString().simplified());
}

QString fileLine(const QString& what, const QString& path)
{
    return QStringLiteral("%1: %2%3\n")
        .arg(what, printable(path),
             QFileInfo(path).isFile() ? QString() : QStringLiteral(" (missing)"));
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

// The project with the places of its files, everything else as it was.
Status write(ProjectFileLoader& loader, const ProjectContents& project, const QString& path)
{
    loader.saveProject(project.namesLog ? project.logFile : QString(), project.videoFile,
                       QFileInfo(path).absoluteFilePath(),
                       {{QStringLiteral("parts"), project.parts},
                        {QStringLiteral("properties"), project.properties},
                        {QStringLiteral("poi"), project.pois.value_or(QVariantList())}});
    return loader.lastSave();
}

ExitStatus project(const QCommandLineParser& line)
{
    const QStringList arguments = line.positionalArguments();
    const QString folder = line.value(QStringLiteral("locate"));
    const QString target = line.value(QStringLiteral("out"));
    const bool isLocated = line.isSet(QStringLiteral("locate"));
    if (arguments.size() != 1)
        return WrongUsage;
    if (line.isSet(QStringLiteral("out")) && !isLocated)
        return wrongUsage(QStringLiteral("--out needs --locate."));
    const bool asJson = line.isSet(QStringLiteral("json"));
    ProjectFileLoader loader;
    loader.loadProject(arguments[0]);
    ProjectContents contents = loader.contents();
    if (!contents.namesVideo)
        return fail(*loader.loadProblem());
    if (isLocated) {
        if (const auto problem = folderProblem(folder))
            return fail(*problem);
        contents = withMediaIn(contents, QFileInfo(folder).absoluteFilePath(), false);
    }
    if (!target.isEmpty()) {
        const Status written = write(loader, contents, target);
        if (!written)
            return fail(written.failure());
    }
    return writeOut(asJson ? printedJson(QJsonDocument(json(arguments[0], contents)))
                           : text(contents).toUtf8());
}

std::vector<Command> commands()
{
    return {{QStringLiteral("project"),
             QStringLiteral("FILE [--locate DIR [--out PROJECT]] [--json]"),
             QStringLiteral("what a project holds, and what of it is missing"),
             {valued(QStringLiteral("locate"), QStringLiteral("DIR"),
                     QStringLiteral("looks for missing files in and below DIR")),
              valued(QStringLiteral("out"), QStringLiteral("PROJECT"),
                     QStringLiteral("writes the project with the places found")),
              flag(QStringLiteral("json"), QStringLiteral("writes JSON"))},
             project}};
}

const CommandSet registered(30, commands);

} // namespace
} // namespace corv::cli
