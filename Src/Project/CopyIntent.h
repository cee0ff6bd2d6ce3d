#pragma once

#include <QByteArray>
#include <QString>
#include <vector>

namespace corv {

/// What is about to be named beside a project, written down first: a program that is killed after
/// its copies have their names and before the project names them leaves copies that nobody refers
/// to. The next program that opens or saves a project in that folder removes them.
///
/// The file is hidden, beside the project. Made and used on one thread.
class CopyIntent
{
public:
    explicit CopyIntent(const QString& projectPath);

    /// The project is written, or the copies are gone again: forgets the intent.
    ~CopyIntent();
    CopyIntent(const CopyIntent&) = delete;
    CopyIntent& operator=(const CopyIntent&) = delete;

    /// A copy that is open and is to get this name. `seriesFolder` is the folder that comes with
    /// it, if one does.
    void add(const QString& target, int descriptor, const QString& seriesFolder);

    /// Before the first copy gets its name. Returns the system's error number, 0 for success.
    int write();

    /// Removes what killed programs of this machine left in a folder. Only files that are still
    /// what was copied, and that no project of the folder names, are deleted.
    static void removeAbandoned(const QString& folder);

private:
    struct Copy
    {
        QString target;
        QByteArray identity;
        QString seriesFolder;
    };

    const QString m_path;
    std::vector<Copy> m_copies;
    bool m_isWritten = false;
};

} // namespace corv
