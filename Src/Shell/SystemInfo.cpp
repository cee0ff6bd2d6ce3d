#include "Shell/SystemInfo.h"

#include "Base/FileReplacement.h"
#include "Platform/Platform.h"
#include "Shell/logCategory.h"

#include <QDateTime>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QLocale>
#include <QStandardPaths>
#include <QSysInfo>
#include <QVariantMap>

namespace corv {

SystemInfo::SystemInfo()
    : m_filePath(
          QDir::cleanPath(QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
                          QDir::separator() + QStringLiteral("SystemInfo.txt")))
{
}

bool SystemInfo::fileExists() const
{
    return QFile::exists(m_filePath);
}

quint64 SystemInfo::ramInstalledKb() const
{
    return platform::installedMemoryKb();
}

void SystemInfo::writeToFile() const
{
    QJsonObject root;
    root[QStringLiteral("timestamp")] =
        QLocale::c().toString(QDateTime::currentDateTime(), QStringLiteral("yyyy-MM-dd hh:mm:ss"));

    // The empty ones keep their place in the file; nothing is gathered for them.
    const QVariantMap properties = {
        {QStringLiteral("Computer Model"), QString()},
        {QStringLiteral("Cpu Architecture"), QSysInfo::currentCpuArchitecture()},
        {QStringLiteral("Cpu Model"), QString()},
        {QStringLiteral("Operating System"), QString()},
        {QStringLiteral("RAM Installed Kilobytes"), ramInstalledKb()},
    };
    QJsonObject propertiesObject;
    for (auto property = properties.begin(); property != properties.end(); ++property)
        propertiesObject[property.key()] = QJsonValue::fromVariant(property.value());
    root[QStringLiteral("properties")] = propertiesObject;

    // An empty file would count as written at every later start.
    if (const Status written = replaceFile(m_filePath, QJsonDocument(root).toJson()); !written) {
        qCWarning(lcShell) << "System info not written:" << written.failure().sentence;
        return;
    }
    qCInfo(lcShell) << "System info written in the json " << m_filePath;
}

} // namespace corv
