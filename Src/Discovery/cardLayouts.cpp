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

QList<QFileInfo> findFiles(const QString& directory, QStringList subPath, const QString& extension)
{
    if (directory.isEmpty())
        return {}; // and not the folder that the program was started from
    const QDir folder(directory);
    if (subPath.isEmpty())
        return folder.entryInfoList({QStringLiteral("*.") + extension}, QDir::AllEntries,
                                    QDir::Name | QDir::IgnoreCase);
    const QString pattern = subPath.takeFirst();
    QList<QFileInfo> files;
    const QStringList names = folder.entryList({pattern}, QDir::Dirs, QDir::Unsorted);
    for (const QString& name : names)
        files += findFiles(directory + QLatin1Char('/') + name, subPath, extension);
    return files;
}

} // namespace corv
