#pragma once

#include <QFileInfo>
#include <QList>
#include <QString>
#include <QStringList>

namespace corv {

/// Where one model of drone leaves one kind of files on a card.
struct CardLayout
{
    enum Kind { Log = 0, Video = 1 };

    int kind;            ///< a `Kind`
    QString extension;   ///< without the dot
    QStringList subPath; ///< folders from the root of the card down, each a name filter
    QString droneModel;
};

/// The layouts of all models. Every walk over them is in this order.
const QList<CardLayout>& cardLayouts();

/// The folders that the name filters of `subPath` lead to from `directory` on, in listing order;
/// the directory itself for none. Any thread.
QStringList foldersBelow(const QString& directory, QStringList subPath);

/// The entries of `directory` that have the extension, sorted by name ignoring case; with a
/// `subPath`, those of every folder that its filters lead to, folder by folder. Folders whose names
/// have the extension are among them. What is missing or cannot be read gives nothing. Any thread.
QList<QFileInfo> findFiles(const QString& directory, QStringList subPath, const QString& extension);

} // namespace corv
