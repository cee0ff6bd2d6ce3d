#include "Cli/logFiles.h"

#include <QByteArray>
#include <QFile>
#include <cerrno>
#include <dirent.h>
#include <sys/stat.h>

namespace corv::cli {
namespace {

enum class Kind { other, file, folder };

// Links are followed to files alone: those to folders may lead in circles.
Kind kindOf(const QByteArray& path)
{
    struct stat facts
    {
    };
    if (::lstat(path.constData(), &facts) != 0)
        return Kind::other;
    if (S_ISDIR(facts.st_mode))
        return Kind::folder;
    if (S_ISLNK(facts.st_mode) && ::stat(path.constData(), &facts) != 0)
        return Kind::other;
    return S_ISREG(facts.st_mode) ? Kind::file : Kind::other;
}

bool isFolder(const QString& path)
{
    struct stat facts
    {
    };
    return ::stat(QFile::encodeName(path).constData(), &facts) == 0 && S_ISDIR(facts.st_mode);
}

Failure notListed(const QByteArray& folder, int error)
{
    return {error == EACCES ? Failure::Kind::noPermission : Failure::Kind::unreadable,
            QStringLiteral("The folder \"%1\" cannot be read: %2.")
                .arg(QFile::decodeName(folder), qt_error_string(error))};
}

// By the system's own calls: Qt leaves out names that are not UTF-8.
void list(const QByteArray& folder, QStringList* found, LogFiles* logs)
{
    DIR* const entries = ::opendir(folder.constData());
    if (!entries) {
        logs->unreadFolders.append({QFile::decodeName(folder), notListed(folder, errno)});
        return;
    }
    QList<QByteArray> folders;
    errno = 0;
    while (const dirent* entry = ::readdir(entries)) {
        const QByteArray name = entry->d_name;
        const QByteArray path = folder + '/' + name;
        const Kind kind = name.startsWith('.') ? Kind::other : kindOf(path);
        if (kind == Kind::folder)
            folders += path;
        else if (kind == Kind::file && name.toLower().endsWith(".log"))
            found->append(QFile::decodeName(path));
        errno = 0;
    }
    if (errno != 0)
        logs->unreadFolders.append({QFile::decodeName(folder), notListed(folder, errno)});
    ::closedir(entries);
    for (const QByteArray& below : qAsConst(folders))
        list(below, found, logs);
}

} // namespace

LogFiles logFilesOf(const QStringList& arguments)
{
    LogFiles logs;
    for (const QString& argument : arguments) {
        if (!isFolder(argument)) {
            logs.paths += argument;
            continue;
        }
        QByteArray folder = QFile::encodeName(argument);
        while (folder.size() > 1 && folder.endsWith('/'))
            folder.chop(1);
        QStringList found;
        list(folder, &found, &logs);
        found.sort();
        logs.paths += found;
    }
    logs.isOneFile = arguments.size() == 1 && !isFolder(arguments[0]);
    return logs;
}

} // namespace corv::cli
