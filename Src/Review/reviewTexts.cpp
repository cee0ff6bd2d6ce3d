#include "Review/reviewTexts.h"

namespace corv {

QString missingFileText(const QString& kind, const QString& path)
{
    return QStringLiteral(
               "Project could be opened, but referenced %1 file not found.\nFile could have been "
               "deleted, or project could have been copied/moved to a different place without the "
               "associated log & video files. Be sure to keep video & log files in the same "
               "relative "
               "location to the project file.\n\nExpected %1 file location:\n")
               .arg(kind) +
           path;
}

QString notCopiedText(const QString& videoPath, const QString& logPath)
{
    return QStringLiteral(
               "Could not copy video or log next to the project file. Moving the project "
               "file to a different location after creation may break its association "
               "with log and video files. Make sure to keep those files in the same "
               "relative location from the project file. \n\nVideo was loaded from:\n\n") +
           videoPath + QStringLiteral("\n\nLog was loaded from\n\n") + logPath;
}

QString withCause(const QString& text, const std::optional<Failure>& cause)
{
    return cause ? text + QStringLiteral("\n\n") + cause->sentence : text;
}

} // namespace corv
