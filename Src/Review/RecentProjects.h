#pragma once

#include <QObject>
#include <QStringList>
#include <QVariantList>

namespace corv {

/// The projects that were opened or saved last, the newest first, kept in the settings. Interface
/// thread only.
class RecentProjects : public QObject
{
    Q_OBJECT
    Q_PROPERTY(QVariantList projects READ projects NOTIFY projectsChanged)

public:
    static constexpr int mostProjects = 10;

    explicit RecentProjects(QObject* parent = nullptr);

    /// Maps of "path", "name" (the file's name without its suffix) and "exists", as it was when the
    /// list changed or was refreshed.
    QVariantList projects() const { return m_projects; }

    /// Puts a project first; nothing for an empty path.
    Q_INVOKABLE void add(const QString& path);
    Q_INVOKABLE void clear();

    /// Checks anew which of the projects exist.
    Q_INVOKABLE void refresh();

signals:
    void projectsChanged();

private:
    void store(const QStringList& paths);

    QVariantList m_projects;
};

} // namespace corv
