#include "Review/RecentProjects.h"

#include <QFileInfo>
#include <QSettings>

namespace corv {
namespace {

const QString settingsKey = QStringLiteral("recentProjects/paths");

} // namespace

RecentProjects::RecentProjects(QObject* parent) : QObject(parent)
{
    refresh();
}

void RecentProjects::add(const QString& path)
{
    if (path.isEmpty())
        return;
    QStringList paths = QSettings().value(settingsKey).toStringList();
    paths.removeAll(path);
    paths.prepend(path);
    store(paths.mid(0, mostProjects));
}

void RecentProjects::clear()
{
    store({});
}

void RecentProjects::store(const QStringList& paths)
{
    QSettings().setValue(settingsKey, paths);
    refresh();
}

void RecentProjects::refresh()
{
    QVariantList projects;
    for (const QString& path : QSettings().value(settingsKey).toStringList().mid(0, mostProjects)) {
        const QFileInfo file(path);
        projects.append(QVariantMap{{QStringLiteral("path"), path},
                                    {QStringLiteral("name"), file.completeBaseName()},
                                    {QStringLiteral("exists"), file.isFile()}});
    }
    if (projects == m_projects)
        return;
    m_projects = projects;
    emit projectsChanged();
}

} // namespace corv
