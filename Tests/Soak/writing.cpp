#include "Activity.h"
#include "programs.h"

#include "Project/ProjectFileLoader.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QVariantMap>
#include <cmath>
#include <map>

namespace corv::soak {
namespace {

// What writes files: commands of the tool, and the saving of projects.
struct Job
{
    const char* name;
    QString program;
    QStringList arguments;
    bool endsByItself;
};

std::vector<Job> jobsOf(const Workshop& shop, const QString& folder)
{
    const auto tool = [&](const char* name, const QStringList& arguments) {
        return Job{name, shop.commandTool,
                   QStringList{QString::fromLatin1(name), shop.project} + arguments, true};
    };
    const QString out = QStringLiteral("--out");
    return {tool("report", {out, folder + QStringLiteral("/report.docx")}),
            tool("frames", {out, folder, QStringLiteral("--spacing"), QStringLiteral("20")}),
            tool("frame", {out, folder + QStringLiteral("/one.jpg"), QStringLiteral("--at-ms"),
                           QStringLiteral("500")}),
            Job{"save", shop.ownProgram, {QStringLiteral("--save"), folder}, false}};
}

/// What the two activities have in common: a folder that jobs write into, and one for their
/// temporary files.
class Writing : public Activity
{
public:
    Writing(const Workshop& shop, const QString& name)
        : m_name(name), m_folder(shop.folder + '/' + name), m_temporary(m_folder + "-tmp"),
          m_jobs(jobsOf(shop, m_folder))
    {
        QDir().mkpath(m_folder);
        QDir().mkpath(m_temporary);
    }

    QString name() const override { return m_name; }

protected:
    const Job& anyJob(QRandomGenerator& random) const
    {
        return m_jobs[random.bounded(static_cast<quint32>(m_jobs.size()))];
    }

    // How long the job takes when nothing happens to it; with it, all its files are there.
    int durationMs(const Job& job)
    {
        int& duration = m_durations[job.name];
        if (duration == 0) {
            QElapsedTimer timer;
            timer.start();
            runProgram(job.program, job.arguments, m_temporary, job.endsByItself ? -1 : 500, -1,
                       nullptr);
            duration = static_cast<int>(timer.elapsed()) + 1;
        }
        return duration;
    }

    End run(const Job& job, int killAfterMs, qint64 fileLimitBytes)
    {
        return runProgram(job.program, job.arguments, m_temporary, killAfterMs, fileLimitBytes,
                          &m_error);
    }

    QString problem(const Job& job, const QString& text) const
    {
        return QStringLiteral("%1: %2 (%3)")
            .arg(QString::fromLatin1(job.name), text, m_error.right(2000));
    }

    const QString m_name;
    const QString m_folder;
    const QString m_temporary;
    QString m_error;

private:
    std::vector<Job> m_jobs;
    std::map<QByteArray, int> m_durations;
};

/// Kills a program while it writes. What was there before is whole or replaced by what is whole,
/// and the next run takes away what the killed one left in the temporary folder.
class Kills : public Writing
{
public:
    explicit Kills(const Workshop& shop) : Writing(shop, QStringLiteral("kills")) {}

    QString title() const override
    {
        return QStringLiteral("programs killed while they save, export or report");
    }

    QString step(QRandomGenerator& random) override
    {
        const Job& job = anyJob(random);
        const double moment = random.generateDouble();
        const int killAfterMs = static_cast<int>(durationMs(job) * moment);
        const End end = run(job, killAfterMs, -1);
        if (end == End::crashed || end == End::failure)
            return problem(job, QStringLiteral("it ended by itself"));
        const QString broken = whatIsBroken(m_folder);
        if (!broken.isEmpty())
            return problem(job, broken);
        return random.bounded(10) == 0 ? leftovers() : QString();
    }

private:
    QString leftovers()
    {
        const Job report = jobAfterKills();
        if (run(report, -1, -1) != End::success)
            return problem(report, QStringLiteral("it fails after a kill"));
        const QStringList left = QDir(m_temporary).entryList({QStringLiteral("vistrel-report-*")});
        return left.isEmpty() ? QString()
                              : problem(report, left.join(' ') + QStringLiteral(" is left over"));
    }

    Job jobAfterKills()
    {
        QRandomGenerator first(0);
        for (;;) {
            const Job& job = anyJob(first);
            if (qstrcmp(job.name, "report") == 0)
                return job;
        }
    }
};

/// Lets the disk be full at any byte of any file. The program says that it failed, and what was
/// there before is whole.
class FullDisks : public Writing
{
public:
    explicit FullDisks(const Workshop& shop) : Writing(shop, QStringLiteral("disks")) {}

    QString title() const override
    {
        return QStringLiteral("disks that are full while a program saves, exports or reports");
    }

    QString step(QRandomGenerator& random) override
    {
        const Job& job = anyJob(random);
        durationMs(job);
        const qint64 largest = 400'000;
        // The small limits are as likely as the large ones: the heads of files are there.
        const auto limit =
            static_cast<qint64>(double(largest) * std::pow(random.generateDouble(), 4));
        const End end = run(job, job.endsByItself ? -1 : 300, limit);
        if (end == End::crashed)
            return problem(job, QStringLiteral("it crashed at %1 bytes").arg(limit));
        if (end == End::stillRuns)
            return problem(job, QStringLiteral("it does not end at %1 bytes").arg(limit));
        const QString broken = whatIsBroken(m_folder);
        return broken.isEmpty()
                   ? QString()
                   : problem(job, QStringLiteral("%1 at %2 bytes").arg(broken).arg(limit));
    }
};

} // namespace

std::unique_ptr<Activity> makeKills(const Workshop& workshop)
{
    return std::make_unique<Kills>(workshop);
}

std::unique_ptr<Activity> makeFullDisks(const Workshop& workshop)
{
    return std::make_unique<FullDisks>(workshop);
}

int saveWithoutEnd(const QString& folder)
{
    QVariantList pois;
    for (int i = 0; i < 400; ++i)
        pois << QVariantMap{{QStringLiteral("time"), i},
                            {QStringLiteral("name"), QStringLiteral("insulator %1").arg(i)},
                            {QStringLiteral("comment"), QString(100, QLatin1Char('c'))}};
    ProjectFileLoader loader;
    for (;;)
        loader.saveProject(folder + QStringLiteral("/a.log"), folder + QStringLiteral("/a.mp4"),
                           folder + QStringLiteral("/saved.ecor"), {{QStringLiteral("poi"), pois}});
}

} // namespace corv::soak
