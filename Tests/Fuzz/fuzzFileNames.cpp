#include "Discovery/cardLayouts.h"
#include "Discovery/filePairing.h"
#include "ScratchFile.h"
#include "Video/fileNames.h"

#include <QDir>
#include <cstdlib>
#include <utility>

namespace {

constexpr int mostFiles = 24;

// A name for a file in one folder, of whatever bytes: the system allows all but these.
QByteArray asFileName(QByteArray text)
{
    text.replace('/', '_').replace('\0', '_');
    return text.left(200);
}

// The files of that card: a name a line.
QList<QByteArray> makeCard(const QString& folder, const QByteArray& text)
{
    QList<QByteArray> made;
    for (const QByteArray& line : text.split('\n').mid(0, mostFiles)) {
        const QByteArray name = asFileName(line);
        if (name.isEmpty() || name == "." || name == ".." || made.contains(name))
            continue;
        QFile file(QFile::decodeName(QFile::encodeName(folder) + '/' + name));
        if (file.open(QIODevice::WriteOnly))
            made << name;
    }
    return made;
}

} // namespace

/// A card of files of any names is listed, joined to flights and paired: each file of a flight is
/// there, no flight has a file twice, each video has a log or none.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace corv;
    static const fuzz::ScratchFile scratch(QStringLiteral("card/x"));
    const QString folder = QFileInfo(scratch.path()).path();
    QDir(folder).removeRecursively();
    QDir().mkpath(folder);
    makeCard(folder, QByteArray(reinterpret_cast<const char*>(data), static_cast<int>(size)));

    for (const QFileInfo& entry : QDir(folder).entryInfoList(QDir::Files | QDir::Hidden)) {
        QStringList flight = expandVideoSequence(entry.filePath());
        for (const QString& file : std::as_const(flight)) {
            if (!QFileInfo::exists(file))
                std::abort();
        }
        if (flight.removeDuplicates() > 0)
            std::abort();
        if (QFileInfo(differentFileName(entry.filePath())).fileName() == entry.fileName())
            std::abort();
    }
    const auto timeOf = [](const QFileInfo& file) {
        return QDateTime::fromSecsSinceEpoch(file.fileName().size() * 60);
    };
    const auto videos = sortedByTime(findFiles(folder, {}, QStringLiteral("mp4")), timeOf);
    const auto logs = sortedByTime(findFiles(folder, {}, QStringLiteral("log")), timeOf);
    const std::vector<int> pairs = pairVideosWithLogs(videos, logs);
    if (pairs.size() != videos.size())
        std::abort();
    for (const int log : pairs) {
        if (log < -1 || log >= static_cast<int>(logs.size()))
            std::abort();
    }
    return 0;
}
