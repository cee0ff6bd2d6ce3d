#pragma once

#include "Project/ProjectFileLoader.h"
#include "Support/savedProject.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>
#include <QtTest>
#include <memory>

namespace corv::test {

/// A point of interest in list form.
inline QVariantMap poi(int timeMs, const QString& name, const QString& comment = {})
{
    return {{"time", timeMs}, {"name", name}, {"comment", comment}};
}

/// What the interface hands over to be saved.
inline QVariantMap flightProperties(const QVariantList& pois = {})
{
    const QVariantMap display{{"brightness", 0.25}, {"contrast", 1.5}};
    const QVariantMap designation{{"flight_name", QString::fromUtf8("Été «7»")},
                                  {"flight_number", 7}};
    return {{"properties", QVariantMap{{"display", display}, {"designation", designation}}},
            {"poi", pois}};
}

/// Writes a file, and makes the folders on the way.
inline void writeFile(const QString& path, const QByteArray& content)
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

inline QByteArray readFile(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// A loader and a folder for its projects, for suites to derive from.
class ProjectFixture
{
protected:
    /// Begins with an empty folder that everybody may read: for the `init` of a suite.
    void makeFolder()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(m_folder->isValid());
        QVERIFY(QFile::setPermissions(m_folder->path(), QFile::Permissions(0x7755)));
    }

    QString path(const QString& name) const { return m_folder->filePath(name); }

    std::unique_ptr<QTemporaryDir> m_folder;
    ProjectFileLoader m_loader;
};

} // namespace corv::test
