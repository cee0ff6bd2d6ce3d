#include "Bench.h"
#include "Support/Servers.h"
#include "Support/TestCard.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QProcessEnvironment>
#include <QStringList>
#include <QTemporaryDir>
#include <cstdio>
#include <sched.h>
#include <unistd.h>

namespace corv::bench {
namespace {

// The first two processors that this process may use; where there is one alone, that one.
QStringList twoProcessors()
{
    cpu_set_t allowed;
    CPU_ZERO(&allowed);
    sched_getaffinity(0, sizeof(allowed), &allowed);
    QStringList numbers;
    for (int i = 0; i < CPU_SETSIZE && numbers.size() < 2; ++i)
        if (CPU_ISSET(i, &allowed))
            numbers << QString::number(i);
    return numbers;
}

// Keeps this process, and what it starts, to two processors while this lives.
class OnTwoProcessors
{
public:
    OnTwoProcessors()
    {
        sched_getaffinity(0, sizeof(m_before), &m_before);
        cpu_set_t two;
        CPU_ZERO(&two);
        for (const QString& number : twoProcessors())
            CPU_SET(number.toUInt(), &two);
        sched_setaffinity(0, sizeof(two), &two);
    }
    ~OnTwoProcessors() { sched_setaffinity(0, sizeof(m_before), &m_before); }
    OnTwoProcessors(const OnTwoProcessors&) = delete;
    OnTwoProcessors& operator=(const OnTwoProcessors&) = delete;

private:
    cpu_set_t m_before{};
};

// Reviews of one card, each into an output folder of its own. No word processor is found: printing
// takes longer than all the rest, and is not ours.
class CardReviews
{
public:
    CardReviews(const Report& report, const QString& name, int flights, int shortestSeconds)
        : m_card(report.inputFolder() + '/' + name)
    {
        test::TestCard card;
        card.flights = flights;
        card.shortestSeconds = shortestSeconds;
        card.size = QSize(1280, 720);
        if (!QFile::exists(m_card + '/' + test::TestCard::logFile(flights)) && !card.write(m_card))
            qFatal("the card cannot be made");
        QFile tool(m_tools.filePath("vistrel-cli"));
        if (!tool.open(QIODevice::WriteOnly) ||
            tool.write("#!/bin/sh\nPATH=/nonexistent exec " VISTREL_CLI " \"$@\"\n") < 0 ||
            !tool.setPermissions(QFile::ReadOwner | QFile::ExeOwner))
            qFatal("the tool cannot be made");
        m_environment.insert("VISTREL_CLI", tool.fileName());
    }

    QString card() const { return m_card; }
    QString tool() const { return m_tools.filePath("vistrel-cli"); }
    void setVariable(const QString& name, const QString& value)
    {
        m_environment.insert(name, value);
    }

    // On these processors, to the end; gives what it wrote.
    QByteArray run(const QStringList& processors, const QStringList& command,
                   const QByteArray& input = {}) const
    {
        QProcess process;
        process.setProcessEnvironment(m_environment);
        process.start("taskset", QStringList{"-c", processors.join(',')} + command);
        process.write(input);
        process.closeWriteChannel();
        if (!process.waitForFinished(-1) || process.exitCode() != 0)
            qFatal("%s ended with %d: %s", qPrintable(command.join(' ')), process.exitCode(),
                   process.readAllStandardError().constData());
        return process.readAllStandardOutput();
    }

    void whole(const QStringList& options) const
    {
        const QTemporaryDir out;
        run(twoProcessors(),
            QStringList{tool(), "review", "--at-once", "2", "--out", out.path(), m_card} + options);
    }

    void partsOneAfterAnother() const
    {
        const QTemporaryDir out;
        const QStringList one = twoProcessors().mid(0, 1);
        const QByteArray jobs =
            run(one, {tool(), "review", "--list", "--json", "--out", out.path(), m_card});
        for (const QByteArray& job : jobs.trimmed().split('\n'))
            run(one, {tool(), "review", "--job", "-", "--out", out.path()}, job);
    }

private:
    QString m_card;
    QTemporaryDir m_tools;
    QProcessEnvironment m_environment = QProcessEnvironment::systemEnvironment();
};

void cardOnTwoCores(Report& report)
{
    const CardReviews reviews(report, "card", 8, 16);
    report.row(QStringLiteral("review of 8 flights, two cores"),
               timeRatio([&] { reviews.whole({}); }, [&] { reviews.partsOneAfterAnother(); }, 3),
               0.65, QStringLiteral("its parts, on one core, one after another"));
}

// More than twenty seconds of work for each of two workers, in flights of three minutes: a cluster
// looks for its next task once a second, and what is submitted waits for that.
void engines(Report& report)
{
    const OnTwoProcessors processors; // for the servers, too
    CardReviews reviews(report, "card-of-longer-flights", 4, 180);
    const QStringList options{"--video"};
    const auto whole = [&] { reviews.whole(options); };
    const QString input = QStringLiteral("review on the same two cores, with video");

    const auto parallel = [&] {
        const QTemporaryDir out;
        reviews.run(twoProcessors(), QStringList{VISTREL_BATCH "/review-parallel", out.path(),
                                                 "2/:", reviews.card(), "--"} +
                                         options);
    };
    report.row(QStringLiteral("GNU parallel, two workers"), ratioInTurn(parallel, whole, 3), 1.15,
               input);

    if (::geteuid() != 0) {
        std::fprintf(stderr, "Slurm is left out: only the administrator can start a cluster.\n");
        return;
    }
    const QString folder = report.inputFolder() + QStringLiteral("/slurm");
    const test::SlurmCluster cluster(folder);
    if (!cluster.isReady())
        qFatal("the cluster does not start; see %s", qPrintable(folder));
    reviews.setVariable("SLURM_CONF", cluster.configuration());
    const auto slurm = [&] {
        const QTemporaryDir out;
        reviews.run(twoProcessors(),
                    QStringList{VISTREL_BATCH "/review-slurm", out.path(), reviews.card(), "--"} +
                        options);
    };
    report.row(QStringLiteral("Slurm, two workers"), ratioInTurn(slurm, whole, 3), 1.15, input);
}

const Benchmark twoCores("review", cardOnTwoCores);
const Benchmark manyMachines("engines", engines);

} // namespace
} // namespace corv::bench
