#pragma once

#include "Base/Failure.h"
#include "Project/ProjectFile.h"
#include "Review/ReviewProperties.h"
#include "Review/ownedFiles.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>
#include <vector>

namespace corv {

/// The unsaved state of one review.
struct RecoveredReview
{
    QString file; ///< where it is kept
    QDateTime savedAt;
    QString projectPath;      ///< empty for a review that was never saved
    QDateTime projectSavedAt; ///< by another program, after this was kept; else invalid
    ProjectContents contents;

    /// The file is damaged, or the media are not there: it can only be discarded.
    std::optional<Failure> problem;
};

/// What a recovery keeps of adjustments and names. Without the range of the thermal colours where
/// it follows the picture: nobody chose it.
QVariantMap keptProperties(ReviewProperties properties, const QStringList& curves);

/// The text of a recovery file.
QByteArray recoveryText(const RecoveredReview& review);

/// The folder of the unsaved reviews. Each is a file of its own, locked by the program that works
/// on it: two programs at once do not see each other's. Interface thread; a folder that cannot be
/// written keeps nothing.
class RecoveryStore
{
public:
    explicit RecoveryStore(const QString& folder);

    /// A name for the next review that this program works on, and its lock. Empty if the folder
    /// cannot be written.
    using Place = OwnedFile;
    Place newPlace() const;

    /// The reviews that no running program works on, the newest first. Damaged ones are among them,
    /// with a problem. One that equals its project, as a program leaves it that is killed right
    /// after saving, is removed.
    std::vector<RecoveredReview> found() const;

    /// False if another program has taken it since.
    bool remove(const QString& file) const;

private:
    QString m_folder;
};

} // namespace corv
