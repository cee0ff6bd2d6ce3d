#include "Review/JobJournal.h"

#include "Platform/fileSystem.h"
#include "Review/logCategory.h"

#include <QCoreApplication>
#include <QDebug>
#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

namespace corv {
namespace {

constexpr int formatVersion = 1;
constexpr qint64 mostBytes = 1 << 20;
constexpr int mostNamed = 5;
constexpr int delayMs = 500;
const QString namePrefix = QStringLiteral("jobs");

QString lineOf(const Job& job)
{
    return job.target().isEmpty()
               ? job.title()
               : QStringLiteral("%1 (%2)").arg(job.title(), QDir::toNativeSeparators(job.target()));
}

QByteArray textOf(const QStringList& lines)
{
    const QJsonObject object{{QStringLiteral("format"), formatVersion},
                             {QStringLiteral("jobs"), QJsonArray::fromStringList(lines)}};
    return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

// A damaged file names nothing.
QStringList linesIn(const QString& path)
{
    QFile file(path);
    if (file.size() > mostBytes || !file.open(QIODevice::ReadOnly))
        return {};
    const QJsonObject object = QJsonDocument::fromJson(file.readAll()).object();
    QStringList lines;
    for (const QJsonValue line : object.value(QLatin1String("jobs")).toArray()) {
        if (!line.toString().isEmpty())
            lines << line.toString();
    }
    return lines;
}

QString sentenceOf(const QStringList& lines)
{
    if (lines.isEmpty())
        return {};
    const QString named = lines.mid(0, mostNamed).join(QStringLiteral("; "));
    const int others = lines.size() - mostNamed;
    return others > 0 ? JobJournal::tr("Not finished when Vistrel last ended: %1; and %2 more")
                            .arg(named)
                            .arg(others)
                      : JobJournal::tr("Not finished when Vistrel last ended: %1").arg(named);
}

} // namespace

JobJournal::JobJournal(QObject* parent) : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(delayMs);
    connect(&m_timer, &QTimer::timeout, this, &JobJournal::write);
    // What ends from here on was ended by quitting.
    connect(QCoreApplication::instance(), &QCoreApplication::aboutToQuit, this,
            &JobJournal::stopFollowing);
}

JobJournal::~JobJournal()
{
    stopFollowing();
}

QString JobJournal::standardFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppLocalDataLocation) +
           QStringLiteral("/jobs");
}

void JobJournal::setJobs(JobList* jobs)
{
    if (m_jobs || !jobs)
        return;
    m_jobs = jobs;
    connect(jobs, &JobList::runningChanged, this, &JobJournal::update);
}

void JobJournal::setFolder(const QString& folder)
{
    if (folder == m_folder)
        return;
    m_folder = folder;
    QStringList unfinished;
    const QStringList files = abandonedFiles(m_folder, namePrefix);
    for (const QString& file : files) {
        unfinished << linesIn(file);
        QFile::remove(file);
    }
    if (unfinished.isEmpty())
        return;
    m_unfinishedText = sentenceOf(unfinished);
    emit unfinishedTextChanged();
}

void JobJournal::forgetUnfinished()
{
    m_unfinishedText.clear();
    emit unfinishedTextChanged();
}

void JobJournal::update()
{
    m_lines.clear();
    for (int row = 0; row < m_jobs->rowCount(); ++row) {
        const Job& job = *m_jobs->job(row);
        if (job.isRunning() && job.isWriting())
            m_lines << lineOf(job);
    }
    if (!m_timer.isActive())
        m_timer.start();
}

void JobJournal::write()
{
    if (m_lines == m_written)
        return;
    // The disk may be slow, and this is the thread of the interface.
    if (m_writing.isRunning()) {
        m_timer.start();
        return;
    }
    if (m_place.file.isEmpty())
        m_place = newOwnedFile(m_folder, namePrefix);
    if (m_place.file.isEmpty())
        return;
    m_written = m_lines;
    m_writing = runOnPool([place = m_place, lines = m_lines] {
        if (lines.isEmpty()) {
            QFile::remove(place.file);
            return;
        }
        const int error = platform::replaceFile(place.file, textOf(lines));
        if (error != 0)
            qCWarning(lcReview) << "The running jobs cannot be kept in" << place.file
                                << qt_error_string(error);
    });
}

void JobJournal::stopFollowing()
{
    if (m_jobs)
        disconnect(m_jobs, nullptr, this, nullptr);
    m_timer.stop();
    m_writing.waitForDone();
    write();
    m_writing.waitForDone();
}

} // namespace corv
