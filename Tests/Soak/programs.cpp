#include "programs.h"

#include "Docx/zipParts.h"

#include <QDirIterator>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <exception>

namespace corv::soak {
namespace {

bool isWholeReport(const QString& path)
{
    try {
        return !readZipParts(path).empty();
    } catch (const std::exception&) {
        return false;
    }
}

bool isWholePicture(const QByteArray& content)
{
    return content.startsWith("\xff\xd8") && content.endsWith("\xff\xd9");
}

bool isWholeProject(const QByteArray& content)
{
    return QJsonDocument::fromJson(content).object().contains(QStringLiteral("contents"));
}

bool isWhole(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    if (path.endsWith(QLatin1String(".docx")))
        return isWholeReport(path);
    if (path.endsWith(QLatin1String(".jpg")))
        return isWholePicture(file.readAll());
    if (path.endsWith(QLatin1String(".ecor")))
        return isWholeProject(file.readAll());
    return true; // what is written beside, under a name of its own
}

} // namespace

End runProgram(const QString& program, const QStringList& arguments, const QString& temporaryFolder,
               int killAfterMs, qint64 fileLimitBytes, QString* error)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("TMPDIR"), temporaryFolder);
    environment.insert(QStringLiteral("QT_QPA_PLATFORM"), QStringLiteral("offscreen"));
    QProcess process;
    process.setProcessEnvironment(environment);
    if (fileLimitBytes < 0) {
        process.start(program, arguments);
    } else {
        // The signal of a file that grows too large is ignored, so that a write fails as on a full
        // disk.
        process.start(QStringLiteral("sh"),
                      QStringList{QStringLiteral("-c"),
                                  QStringLiteral("trap '' XFSZ; exec prlimit --fsize=%1 -- \"$@\"")
                                      .arg(fileLimitBytes),
                                  QStringLiteral("sh"), program} +
                          arguments);
    }
    if (!process.waitForStarted())
        return End::crashed;
    const bool ended = process.waitForFinished(killAfterMs < 0 ? longestMs : killAfterMs);
    if (!ended) {
        process.kill();
        process.waitForFinished();
    }
    const QByteArray complaint = process.readAllStandardError().trimmed();
    if (error)
        *error = QString::fromUtf8(complaint);
    // A sanitizer ends the program with an ordinary status.
    if (complaint.contains("ERROR: AddressSanitizer") || complaint.contains("runtime error: "))
        return End::crashed;
    if (!ended)
        return killAfterMs < 0 ? End::stillRuns : End::killed;
    if (process.exitStatus() != QProcess::NormalExit)
        return End::crashed;
    return process.exitCode() == 0 ? End::success : End::failure;
}

QString whatIsBroken(const QString& folder)
{
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QString path = files.next();
        if (!isWhole(path))
            return QStringLiteral("%1 is not whole").arg(path);
    }
    return {};
}

} // namespace corv::soak
