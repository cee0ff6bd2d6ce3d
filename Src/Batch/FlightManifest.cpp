#include "Batch/FlightManifest.h"

#include "Base/FileReplacement.h"

#include <QCryptographicHash>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

namespace corv {
namespace {

const QString manifestName = QStringLiteral("manifest.json");
constexpr int manifestVersion = 1;
// A manifest has a few lines a step; anything of this size is no manifest.
constexpr qint64 largestManifestBytes = qint64(16) * 1024 * 1024;

QByteArray bytesOf(const QJsonValue& value)
{
    return value.toString().toLatin1();
}

} // namespace

FlightManifest::FlightManifest(QString folder) : m_folder(std::move(folder))
{
    read();
}

void FlightManifest::read()
{
    QFile file(QDir(m_folder).filePath(manifestName));
    if (file.size() > largestManifestBytes || !file.open(QIODevice::ReadOnly))
        return;
    const QJsonObject root = QJsonDocument::fromJson(file.readAll()).object();
    if (root.value(QLatin1String("version")).toInt() != manifestVersion)
        return;
    m_identity = bytesOf(root.value(QLatin1String("identity")));
    const QJsonObject steps = root.value(QLatin1String("steps")).toObject();
    for (auto it = steps.begin(); it != steps.end(); ++it) {
        const QJsonObject entry = it.value().toObject();
        Step step{bytesOf(entry.value(QLatin1String("fingerprint"))),
                  {},
                  bytesOf(entry.value(QLatin1String("digest"))),
                  bytesOf(entry.value(QLatin1String("pendingDigest")))};
        const QJsonObject files = entry.value(QLatin1String("files")).toObject();
        for (auto entryFile = files.begin(); entryFile != files.end(); ++entryFile)
            step.fileSizes.insert(entryFile.key(),
                                  static_cast<qint64>(entryFile.value().toDouble(-1)));
        m_steps.insert(it.key(), step);
    }
}

bool FlightManifest::isDone(const QString& step, const QByteArray& fingerprint) const
{
    const auto found = m_steps.constFind(step);
    if (found == m_steps.constEnd() || found->fingerprint != fingerprint)
        return false;
    const QDir folder(m_folder);
    for (auto it = found->fileSizes.begin(); it != found->fileSizes.end(); ++it) {
        const QFileInfo file(folder.filePath(it.key()));
        if (!file.isFile() || file.size() != it.value())
            return false;
    }
    return true;
}

Status FlightManifest::setDone(const QString& step, const QByteArray& fingerprint,
                               const QStringList& files, const QByteArray& digest)
{
    const QDir folder(m_folder);
    Step done{fingerprint, {}, digest, {}};
    for (const QString& file : files)
        done.fileSizes.insert(file, QFileInfo(folder.filePath(file)).size());
    m_steps.insert(step, done);
    return write();
}

Status FlightManifest::setPending(const QString& step, const QByteArray& digest)
{
    m_steps[step].pendingDigest = digest;
    return write();
}

bool FlightManifest::hasMade(const QString& step, const QByteArray& digest) const
{
    const Step made = m_steps.value(step);
    return !digest.isEmpty() && (digest == made.digest || digest == made.pendingDigest);
}

Status FlightManifest::write() const
{
    QJsonObject steps;
    for (auto it = m_steps.begin(); it != m_steps.end(); ++it) {
        QJsonObject files;
        for (auto file = it->fileSizes.begin(); file != it->fileSizes.end(); ++file)
            files.insert(file.key(), static_cast<double>(file.value()));
        QJsonObject step{{QStringLiteral("fingerprint"), QString::fromLatin1(it->fingerprint)},
                         {QStringLiteral("files"), files}};
        if (!it->digest.isEmpty())
            step.insert(QStringLiteral("digest"), QString::fromLatin1(it->digest));
        if (!it->pendingDigest.isEmpty())
            step.insert(QStringLiteral("pendingDigest"), QString::fromLatin1(it->pendingDigest));
        steps.insert(it.key(), step);
    }
    const QJsonObject root{{QStringLiteral("version"), manifestVersion},
                           {QStringLiteral("identity"), QString::fromLatin1(m_identity)},
                           {QStringLiteral("steps"), steps}};
    return replaceFile(QDir(m_folder).filePath(manifestName), QJsonDocument(root).toJson());
}

Status FlightManifest::claimFor(const QByteArray& identity)
{
    m_identity = identity;
    return write();
}

QByteArray identityOf(const QStringList& videos)
{
    QStringList words;
    for (const QString& path : videos)
        words << QFileInfo(path).fileName() << QString::number(QFileInfo(path).size());
    return fingerprintOf(words, {});
}

QByteArray fingerprintOf(const QStringList& words, const QStringList& files)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto add = [&hash](const QString& word) {
        hash.addData(word.toUtf8());
        hash.addData("\n", 1);
    };
    for (const QString& word : words)
        add(word);
    for (const QString& path : files) {
        const QFileInfo file(path);
        add(file.fileName());
        add(QString::number(file.exists() ? file.size() : -1));
        add(QString::number(file.exists() ? file.lastModified().toMSecsSinceEpoch() : -1));
    }
    return hash.result().toHex();
}

} // namespace corv
