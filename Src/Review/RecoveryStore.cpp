#include "Review/RecoveryStore.h"

#include "Base/limits.h"
#include "Project/ProjectFileLoader.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <utility>

namespace corv {
namespace {

constexpr int formatVersion = 1;
const QString namePrefix = QStringLiteral("review");

Failure damaged(const QString& file)
{
    return {
        Failure::Kind::damaged,
        QStringLiteral("The unsaved review in %1 is damaged and cannot be restored.").arg(file)};
}

Failure tooLarge(const QString& file)
{
    return {
        Failure::Kind::tooLarge,
        QStringLiteral("The unsaved review in %1 is too large and cannot be restored.").arg(file)};
}

RecoveredReview read(const QString& path)
{
    RecoveredReview review;
    review.file = path;
    review.savedAt = QFileInfo(path).lastModified();
    QFile file(path);
    if (file.size() > limits::projectBytes) {
        review.problem = tooLarge(path);
        return review;
    }
    const QJsonObject object = file.open(QIODevice::ReadOnly)
                                   ? QJsonDocument::fromJson(file.readAll()).object()
                                   : QJsonObject();
    const QJsonObject properties = object.value(QLatin1String("properties")).toObject();
    review.contents.videoFile = object.value(QLatin1String("video")).toString();
    if (object.value(QLatin1String("format")).toInt() != formatVersion ||
        review.contents.videoFile.isEmpty()) {
        review.problem = damaged(path);
        return review;
    }
    review.projectPath = object.value(QLatin1String("project")).toString();
    const QDateTime projectSavedAt = QFileInfo(review.projectPath).lastModified();
    if (!review.projectPath.isEmpty() && projectSavedAt > review.savedAt)
        review.projectSavedAt = projectSavedAt;
    review.contents.logFile = object.value(QLatin1String("log")).toString();
    for (const QJsonValue part : object.value(QLatin1String("parts")).toArray())
        review.contents.parts << part.toString();
    review.contents.namesLog = !isNoLog(review.contents.logFile);
    review.contents.namesVideo = true;
    review.contents.properties = properties.toVariantMap();
    review.contents.pois = object.value(QLatin1String("poi")).toArray().toVariantList();
    const QJsonObject sizes = object.value(QLatin1String("sizes")).toObject();
    for (auto size = sizes.begin(); size != sizes.end(); ++size)
        review.contents.sizes.insert(size.key(), static_cast<qint64>(size.value().toDouble(-1)));
    review.problem = fileProblem(QStringLiteral("The video"), review.contents.videoFile);
    return review;
}

QVariantMap comparable(const QVariantMap& properties)
{
    return keptProperties(ReviewProperties::fromJson(properties, ReviewProperties()),
                          curvesIn(properties).value_or(QStringList()));
}

bool equalsItsProject(const RecoveredReview& review)
{
    if (review.projectPath.isEmpty() || !QFileInfo(review.projectPath).isFile())
        return false;
    ProjectFileLoader loader;
    loader.loadProject(review.projectPath);
    const ProjectContents& project = loader.contents();
    const ProjectContents& kept = review.contents;
    return project.namesVideo && project.videoFile == kept.videoFile &&
           project.namesLog == kept.namesLog &&
           (!kept.namesLog || project.logFile == kept.logFile) &&
           (project.parts.isEmpty() || project.parts == kept.parts) &&
           project.pois.value_or(QVariantList()) == kept.pois.value_or(QVariantList()) &&
           comparable(project.properties) == comparable(kept.properties);
}

} // namespace

QVariantMap keptProperties(ReviewProperties properties, const QStringList& curves)
{
    if (properties.autoIRMapping) {
        properties.irMappingMinValue = ReviewProperties().irMappingMinValue;
        properties.irMappingMaxValue = ReviewProperties().irMappingMaxValue;
    }
    QVariantMap kept = properties.toJson();
    putCurves(curves, &kept);
    return kept;
}

QByteArray recoveryText(const RecoveredReview& review)
{
    QJsonObject sizes;
    for (auto size = review.contents.sizes.begin(); size != review.contents.sizes.end(); ++size)
        sizes.insert(size.key(), size.value());
    const QJsonObject object{
        {QStringLiteral("format"), formatVersion},
        {QStringLiteral("project"), review.projectPath},
        {QStringLiteral("video"), review.contents.videoFile},
        {QStringLiteral("parts"), QJsonArray::fromStringList(review.contents.parts)},
        {QStringLiteral("log"), review.contents.logFile},
        {QStringLiteral("sizes"), sizes},
        {QStringLiteral("properties"), QJsonObject::fromVariantMap(review.contents.properties)},
        {QStringLiteral("poi"),
         QJsonArray::fromVariantList(review.contents.pois.value_or(QVariantList()))}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

RecoveryStore::RecoveryStore(const QString& folder) : m_folder(folder) {}

RecoveryStore::Place RecoveryStore::newPlace() const
{
    return newOwnedFile(m_folder, namePrefix);
}

std::vector<RecoveredReview> RecoveryStore::found() const
{
    std::vector<RecoveredReview> reviews;
    const QStringList files = abandonedFiles(m_folder, namePrefix);
    for (const QString& file : files) {
        RecoveredReview review = read(file);
        if (equalsItsProject(review))
            remove(file);
        else
            reviews.push_back(std::move(review));
    }
    return reviews;
}

bool RecoveryStore::remove(const QString& file) const
{
    const std::shared_ptr<QLockFile> lock = takeOwnership(file);
    return lock && QFile::remove(file);
}

} // namespace corv
