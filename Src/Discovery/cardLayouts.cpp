#include "Discovery/cardLayouts.h"

#include <QDir>

namespace corv {

const QList<CardLayout>& cardLayouts()
{
    static const QList<CardLayout> layouts = {
        {CardLayout::Log, QStringLiteral("log"), {}, QStringLiteral("Aviro/Aviro2")},
        {CardLayout::Video,
         QStringLiteral("mp4"),
         {QStringLiteral("DCIM"), QStringLiteral("100HDDVR")},
         QStringLiteral("Aviro")},
        {CardLayout::Video,
         QStringLiteral("mov"),
         {QStringLiteral("DCIM"), QStringLiteral("1??_CORV")},
         QStringLiteral("Aviro2")},
    };
    return layouts;
}

QStringList foldersBelow(const QString& directory, QStringList subPath)
{
    if (directory.isEmpty())
        return {}; // and not the folder that the program was started from
    if (subPath.isEmpty())
        return {directory};
    const QString pattern = subPath.takeFirst();
    QStringList folders;
    const QStringList names = QDir(directory).entryList({pattern}, QDir::Dirs, QDir::Unsorted);
    for (const QString& name : names)
        folders += foldersBelow(directory + QLatin1Char('/') + name, subPath);
    return folders;
}

QList<QFileInfo> findFiles(const QString& directory, QStringList subPath, const QString& extension)
{
    QList<QFileInfo> files;
    const QStringList folders = foldersBelow(directory, subPath);
    for (const QString& folder : folders)
        files += QDir(folder).entryInfoList({QStringLiteral("*.") + extension}, QDir::AllEntries,
                                            QDir::Name | QDir::IgnoreCase);
    return files;
}

} // namespace corv
