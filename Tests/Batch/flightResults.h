#pragma once

#include "Support/WordPackage.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QRegularExpression>
#include <QString>
#include <QStringList>

namespace corv::test {

/// What a review left in its output folder, in a form in which two reviews of the same card are
/// equal: by the path of each file its contents; of a report the parts of the document, and of a
/// manifest the steps with their files, without the times that went into the fingerprints. What the
/// engines keep in ".batch" is left out.
inline QMap<QString, QByteArray> resultsIn(const QString& folder)
{
    // "Sat Nov 21 20:47:21 2026", on the cover.
    static const QRegularExpression writtenAt("\\w{3} \\w{3} \\d+ \\d\\d:\\d\\d:\\d\\d \\d{4}");
    QMap<QString, QByteArray> results;
    QDirIterator files(folder, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot,
                       QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        const QString name = QDir(folder).relativeFilePath(path);
        QFile file(path);
        const QByteArray bytes = file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
        if (name.endsWith(".docx")) {
            const Parts parts = readZip(path);
            for (auto part = parts.begin(); part != parts.end(); ++part)
                results[name + ':' + part.key()] =
                    QString::fromUtf8(part.value()).remove(writtenAt).toUtf8();
        } else if (name.endsWith("manifest.json")) {
            const QJsonObject steps = QJsonDocument::fromJson(bytes).object()["steps"].toObject();
            for (auto step = steps.begin(); step != steps.end(); ++step)
                results[name + ':' + step.key()] =
                    step.value().toObject()["files"].toObject().keys().join('\n').toUtf8();
        } else if (!name.startsWith(".batch/")) {
            results[name] = bytes;
        }
    }
    return results;
}

/// The paths whose results differ between the two; empty if all are equal.
inline QStringList differencesOf(const QMap<QString, QByteArray>& results,
                                 const QMap<QString, QByteArray>& expected)
{
    QStringList paths = results.keys() + expected.keys();
    paths.removeDuplicates();
    QStringList different;
    for (const QString& path : paths) {
        if (!results.contains(path))
            different << path + " is missing";
        else if (!expected.contains(path))
            different << path + " is left over";
        else if (results[path] != expected[path])
            different << path + " differs";
    }
    return different;
}

} // namespace corv::test
