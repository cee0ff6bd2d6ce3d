#include "Review/reviewTexts.h"

#include <QByteArray>
#include <QFile>

namespace corv {
namespace {

// MP4, MOV and 3GP begin with a box, whose kind follows its length; AVI begins with its own sign.
bool beginsLikeVideo(const QByteArray& head)
{
    const QByteArray kind = head.mid(4, 4);
    return head.startsWith("RIFF") || kind == "ftyp" || kind == "moov" || kind == "mdat" ||
           kind == "wide" || kind == "free" || kind == "skip";
}

} // namespace

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

Failure brokenVideo(const QString& path)
{
    QFile file(path);
    constexpr qint64 headBytes = 8;
    const QByteArray head = file.open(QIODevice::ReadOnly) ? file.read(headBytes) : QByteArray();
    const QString text = QStringLiteral("The video %1 cannot be opened: %2.");
    if (head.isEmpty())
        return {Failure::Kind::cutShort, text.arg(path, QStringLiteral("it is empty"))};
    if (beginsLikeVideo(head))
        return {Failure::Kind::damaged,
                text.arg(path, QStringLiteral("it is cut short or damaged"))};
    return {Failure::Kind::notRecognised, text.arg(path, QStringLiteral("it is no video"))};
}

QString withCause(const QString& text, const std::optional<Failure>& cause)
{
    return cause ? text + QStringLiteral("\n\n") + cause->sentence : text;
}

} // namespace corv
